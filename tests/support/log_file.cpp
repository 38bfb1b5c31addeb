#include "log_file.h"

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <iterator>

namespace orv {
namespace {

constexpr std::size_t StampSize = 13;

bool IsStamp(const std::string& bytes, std::size_t position) {
    const std::string pattern = "00:00:00.000\t";
    if (bytes.size() < position + StampSize) {
        return false;
    }
    for (std::size_t i = 0; i < StampSize; ++i) {
        const char c = bytes[position + i];
        if (pattern[i] == '0' ? !std::isdigit(static_cast<unsigned char>(c)) : c != pattern[i]) {
            return false;
        }
    }
    return bytes.substr(position, 2) < "24" && bytes[position + 3] < '6' &&
           bytes[position + 6] <= '6';
}

}  // namespace

std::string LogPath() {
    return LibraryFile() + ".log";
}

std::string LogBytes() {
    std::ifstream file(LogPath(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Lines LogLines() {
    const std::string bytes = LogBytes();
    Lines lines;
    std::size_t start = 0;
    while (start < bytes.size()) {
        if (!IsStamp(bytes, start)) {
            ADD_FAILURE() << "no stamp at byte " << start << ": " << bytes.substr(start, 80);
            return lines;
        }
        std::size_t end = bytes.find("\r\n", start + StampSize);
        while (end != std::string::npos && end + 2 < bytes.size() && !IsStamp(bytes, end + 2)) {
            end = bytes.find("\r\n", end + 1);
        }
        if (end == std::string::npos) {
            ADD_FAILURE() << "a line without end at byte " << start;
            return lines;
        }
        lines.push_back(bytes.substr(start + StampSize, end - start - StampSize));
        start = end + 2;
    }
    return lines;
}

}  // namespace orv
