#include "orv/log/lines.h"

#include <algorithm>

#include "orv/log/entry.h"

namespace orv::log {

namespace {

constexpr std::size_t StampLength = 13;  // with the tab

// A name of an advertisement has at most some 250 bytes. What stays open for longer is not one.
constexpr std::size_t LongestAdvertisement = 1024;

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

// One past the line feed that ends the line in `bytes`, searched from `from`.
std::size_t FindEnd(std::string_view bytes, std::size_t from) {
    for (;;) {
        const std::size_t lineFeed = bytes.find('\n', from);
        if (lineFeed == bytes.npos) {
            return bytes.size();
        }
        from = lineFeed + 1;
        if (from == bytes.size() || ReadStamp(bytes.substr(from))) {
            return from;
        }
    }
}

std::string_view WithoutLineEnd(std::string_view text) {
    if (text.ends_with('\n')) {
        text.remove_suffix(1);
        if (text.ends_with('\r')) {
            text.remove_suffix(1);
        }
    }
    return text;
}

// The end of the line, after the closing of an advertisement's name where there is one within
// reach.
std::size_t FindLineEnd(std::string_view bytes) {
    const std::size_t first = FindEnd(bytes, StampLength);
    std::size_t end = first;
    while (HasOpenName(WithoutLineEnd(bytes.substr(StampLength, end - StampLength)))) {
        if (end == bytes.size() || end > LongestAdvertisement) {
            return first;
        }
        end = FindEnd(bytes, end);
    }
    return end;
}

}  // namespace

std::optional<std::int32_t> ReadStamp(std::string_view bytes) {
    constexpr std::string_view Pattern = "00:00:00.000\t";
    if (bytes.size() < Pattern.size()) {
        return std::nullopt;
    }
    for (std::size_t place = 0; place < Pattern.size(); ++place) {
        if (Pattern[place] == '0' ? !IsDigit(bytes[place]) : bytes[place] != Pattern[place]) {
            return std::nullopt;
        }
    }
    const auto two = [&](std::size_t place) {
        return (bytes[place] - '0') * 10 + (bytes[place + 1] - '0');
    };
    const int hours = two(0), minutes = two(3), seconds = two(6);
    if (hours > 23 || minutes > 59 || seconds > 60) {  // a leap second is one
        return std::nullopt;
    }
    return ((hours * 60 + minutes) * 60 + seconds) * 1000 + two(9) * 10 + (bytes[11] - '0');
}

std::optional<Line> LineReader::Next() {
    SkipStrayLines();
    const std::optional<std::int32_t> stamp = ReadStamp(rest);
    if (!stamp) {
        return std::nullopt;
    }
    const std::string_view whole = rest.substr(0, FindLineEnd(rest));
    const Line line{*stamp, nextNumber, WithoutLineEnd(whole.substr(StampLength)),
                    whole.ends_with('\n')};
    Take(whole.size());
    return line;
}

void LineReader::SkipStrayLines() {
    while (!rest.empty() && !ReadStamp(rest)) {
        const std::size_t lineFeed = rest.find('\n');
        Take(lineFeed == rest.npos ? rest.size() : lineFeed + 1);
        ++strayLines;
    }
}

void LineReader::Take(std::size_t length) {
    nextNumber += static_cast<std::uint64_t>(
        std::count(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(length), '\n'));
    rest.remove_prefix(length);
}

}  // namespace orv::log
