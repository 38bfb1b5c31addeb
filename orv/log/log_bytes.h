// The bytes of a log's file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace orv::log {

// A path from UTF-8, as the command line gives it.
std::filesystem::path PathOf(const std::string& path);

// All of it, or from `offset` on; none when it cannot be read. `path` is UTF-8.
std::optional<std::string> ReadBytes(const std::string& path, std::uint64_t offset = 0);

// All of it; raises a Problem when it cannot be read.
std::string ReadLogFile(const std::string& path);

}  // namespace orv::log
