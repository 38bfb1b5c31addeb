#include "tests/reliability/model/comparison.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "quelvixwinlib_simulated.h"
#include "tests/support/log_file.h"

namespace orv::model {
namespace {

constexpr std::size_t StampSize = 13;

bool IsStamp(const std::string& stamp) {
    return stamp.size() == StampSize && stamp[2] == ':' && stamp[5] == ':' && stamp[8] == '.' &&
           stamp[12] == '\t';
}

// The log file contains CR LF for each line feed.
std::string OnDisk(const std::string& line) {
    std::string stored;
    for (const char c : line + "\n") {
        stored += c == '\n' ? "\r\n" : std::string(1, c);
    }
    return stored;
}

std::string ReadLog(long from) {
    std::string tail;
    if (FILE* file = std::fopen((LibraryFile() + ".log").c_str(), "rb")) {
        std::fseek(file, from, SEEK_SET);
        char buffer[4096];
        for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, file)) > 0;) {
            tail.append(buffer, got);
        }
        std::fclose(file);
    }
    return tail;
}

}  // namespace

void CheckEqual(const char* name, std::int64_t actual, std::int64_t expected) {
    if (actual != expected) {
        throw std::runtime_error(std::string(name) + " is " + std::to_string(actual) +
                                 " instead of " + std::to_string(expected));
    }
}

// Repeats OrvWorld_Settle, because it fails if the machine stalls for seconds.
void Settle() {
    while (OrvWorld_Settle() != 0) {
    }
}

void LogComparison::Check(Lines expected, bool ordered) {
    const std::string tail = ReadLog(position);
    position += static_cast<long>(tail.size());
    std::size_t at = 0;
    while (!expected.empty()) {
        const auto found =
            std::find_if(expected.begin(), expected.end(), [&](const std::string& line) {
                return tail.compare(std::min(at + StampSize, tail.size()), OnDisk(line).size(),
                                    OnDisk(line)) == 0;
            });
        if (!IsStamp(tail.substr(at, StampSize)) || found == expected.end() ||
            (ordered && found != expected.begin())) {
            throw std::runtime_error("the log goes on with <" + tail.substr(at) + "> instead of <" +
                                     expected.front() + ">");
        }
        at += StampSize + OnDisk(*found).size();
        expected.erase(found);
    }
    if (at != tail.size()) {
        throw std::runtime_error("the log has more: <" + tail.substr(at) + ">");
    }
}

}  // namespace orv::model
