#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "orv/system_file.h"

namespace orv::log {

// Converts a UTF-8 path.
std::filesystem::path PathOf(const std::string& path);

// A log that can be read repeatedly. Only the current piece of a file is in memory.
class LogFile {
  public:
    // `path` is UTF-8, or "-" for the standard input. Reads a pipe into memory, up to a limit.
    // Throws a Problem if the log cannot be read.
    explicit LogFile(const std::string& path);

    static LogFile OfBytes(std::string bytes);

    // Receives a piece of the log. Returns the number of used bytes; the next piece begins with the
    // unused ones.
    using Taker = std::function<std::size_t(std::string_view piece, bool isEnd)>;

    // Passes the log to `take` in pieces. Throws a Problem if no line begins with a time stamp or
    // if a line is too long.
    void Read(const Taker& take);

    const std::string& Name() const { return name; }

  private:
    LogFile() = default;
    std::size_t ReadPiece(std::string& window, std::size_t length);
    void ReadPipe(std::FILE* from);
    void RequireLog(std::string_view beginning) const;

    std::string name;
    OpenFile file;  // null if `bytes` contains the whole log
    std::string bytes;
    std::uint64_t size = 0;  // size when the log was opened; later bytes are ignored
    std::uint64_t position = 0;
};

// Returns at most `most` bytes of a file, or nothing if it cannot be read. `path` is UTF-8.
std::optional<std::string> ReadBytes(const std::string& path, std::uint64_t offset,
                                     std::size_t most);

}  // namespace orv::log
