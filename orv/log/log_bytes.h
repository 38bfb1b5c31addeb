// The bytes of a log's file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orv::log {

// All of it, or from `offset` on; none when it cannot be read. `path` is UTF-8.
std::optional<std::string> ReadBytes(const std::string& path, std::uint64_t offset = 0);

}  // namespace orv::log
