#include "orv/log/read/log_file.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "orv/log/read/lines.h"
#include "orv/problem.h"

namespace orv::log {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t Piece = std::size_t{1} << 20;

constexpr std::size_t LongestLine = std::size_t{16} << 20;

// Maximum size of a log from a pipe. Such a log is kept in memory, because it is read repeatedly.
constexpr std::size_t LargestPipe = std::size_t{256} << 20;

constexpr const char* WhereItLies =
    ". The log lies beside the library, under its name with .log added";

Problem Unreadable(const std::string& name, const std::string& why) {
    return {ExitStatus::FileFailed, name + ' ' + why};
}

}  // namespace

fs::path PathOf(const std::string& path) {
    return std::u8string(path.begin(), path.end());
}

LogFile::LogFile(const std::string& path) : name(path == "-" ? "standard input" : path) {
    if (path == "-") {
        ReadPipe(stdin);
        return;
    }
    const fs::path place = PathOf(path);
    std::error_code problem;  // ignored: opening the file then fails, too
    const fs::file_status status = fs::status(place, problem);
    if (fs::is_directory(status)) {
        throw Unreadable(name, std::string("is a folder") + WhereItLies);
    }
    file = OpenForReading(place);
    if (!file) {
        throw Unreadable(
            name, std::string("cannot be read. Check the path and your permissions") + WhereItLies);
    }
    if (fs::is_regular_file(status)) {
        size = fs::file_size(place, problem);
    } else {
        ReadPipe(file.get());
        file.reset();
    }
}

LogFile LogFile::OfBytes(std::string bytes) {
    LogFile log;
    log.name = "log";
    log.size = bytes.size();
    log.bytes = std::move(bytes);
    return log;
}

void LogFile::ReadPipe(std::FILE* from) {
    for (std::size_t count = Piece; count > 0;) {
        const std::size_t before = bytes.size();
        bytes.resize(before + Piece);
        count = std::fread(bytes.data() + before, 1, Piece, from);
        bytes.resize(before + count);
        if (before == 0) {
            RequireLog(bytes);
        }
        if (bytes.size() > LargestPipe) {
            throw Unreadable(name,
                             "has more than 256 MiB. Save it to a file and give the file's name");
        }
    }
    size = bytes.size();
}

std::size_t LogFile::ReadPiece(std::string& window, std::size_t length) {
    const std::size_t before = window.size();
    length = static_cast<std::size_t>(std::min<std::uint64_t>(length, size - position));
    if (file) {
        window.resize(before + length);
        length = std::fread(window.data() + before, 1, length, file.get());
        window.resize(before + length);
    } else {
        window.append(bytes, static_cast<std::size_t>(position), length);
    }
    position += length;
    return length;
}

void LogFile::RequireLog(std::string_view beginning) const {
    if (beginning.empty()) {
        throw Unreadable(name, "is empty: nothing was logged since the log was switched on");
    }
    if (!LineReader(beginning).Next()) {
        const char* where =
            beginning.size() < Piece ? "none of its lines" : "no line in its first 1 MiB";
        throw Unreadable(name, std::string("is not a log: ") + where +
                                   " begins with a time stamp such as 09:00:00.000" + WhereItLies);
    }
}

void LogFile::Read(const Taker& take) {
    position = 0;
    if (file) {
        std::rewind(file.get());
    }
    std::string window;
    for (bool isFirst = true, isEnd = false; !isEnd; isFirst = false) {
        // Doubles the window for a long line, so that the line is searched less often.
        const std::size_t length = std::max(Piece, window.size());
        isEnd = ReadPiece(window, length) < length || position == size;
        if (isFirst) {
            RequireLog(window);
        }
        window.erase(0, take(window, isEnd));
        if (window.size() > LongestLine) {
            throw Unreadable(name, "is not a log: it has a line of more than 16 MiB");
        }
    }
}

std::optional<std::string> ReadBytes(const std::string& path, std::uint64_t offset,
                                     std::size_t most) {
    const fs::path place = PathOf(path);
    std::error_code problem;
    const std::uintmax_t size = fs::file_size(place, problem);
    const OpenFile file = problem ? nullptr : OpenForReading(place);
    if (!file) {
        return std::nullopt;
    }
    const std::uintmax_t left = size > offset ? size - offset : 0;
    std::string bytes(static_cast<std::size_t>(std::min<std::uintmax_t>(left, most)), '\0');
    // Skips in several steps, because `long` has 32 bits on Windows.
    for (std::uint64_t skipped = 0; skipped < offset;) {
        const auto step = static_cast<long>(std::min<std::uint64_t>(offset - skipped, 1 << 30));
        if (std::fseek(file.get(), step, SEEK_CUR) != 0) {
            return std::nullopt;
        }
        skipped += static_cast<std::uint64_t>(step);
    }
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    return bytes;
}

}  // namespace orv::log
