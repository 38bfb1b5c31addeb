#include "orv/log/read/lines.h"

#include <algorithm>

#include "orv/log/read/entry.h"

namespace orv::log {

namespace {

constexpr std::size_t StampLength = 13;  // hh:mm:ss.mmm and a tab

// Maximum length in bytes of an advertisement's line. Its name has at most about 250 bytes.
constexpr std::size_t LongestAdvertisement = 1024;

// Minimum number of bytes that Next needs to decide where a line ends.
constexpr std::size_t LookAhead = 2 * LongestAdvertisement;

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

// Returns the end of a line, which may contain line feeds. A line feed ends the line only if a time
// stamp or the end of `bytes` follows.
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

// A line end within a device name does not end the line.
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
    if (hours > 23 || minutes > 59 || seconds > 60) {  // a leap second has the number 60
        return std::nullopt;
    }
    return ((hours * 60 + minutes) * 60 + seconds) * 1000 + two(9) * 10 + (bytes[11] - '0');
}

std::optional<Line> LineReader::Next() {
    SkipStrayLines();
    if (!isLast && rest.size() < LookAhead) {
        return std::nullopt;
    }
    const std::optional<std::int32_t> stamp = ReadStamp(rest);
    if (!stamp) {
        return std::nullopt;
    }
    const std::string_view whole = rest.substr(0, FindLineEnd(rest));
    if (!isLast && whole.size() == rest.size()) {
        return std::nullopt;
    }
    const Line line{*stamp, nextNumber, WithoutLineEnd(whole.substr(StampLength)),
                    whole.ends_with('\n')};
    Take(whole.size());
    return line;
}

void LineReader::SkipStrayLines() {
    while (!rest.empty() && !ReadStamp(rest)) {
        const std::size_t lineFeed = rest.find('\n');
        if (!isLast && (lineFeed == rest.npos || rest.size() < LookAhead)) {
            return;
        }
        Take(lineFeed == rest.npos ? rest.size() : lineFeed + 1);
        ++strayLines;
    }
}

void LineReader::Take(std::size_t length) {
    nextNumber += static_cast<std::uint64_t>(
        std::count(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(length), '\n'));
    rest.remove_prefix(length);
}

namespace {

constexpr std::int64_t Day = 86400000;

// Maximum time in ms by which lines of two threads can be out of order.
constexpr std::int64_t Disorder = 1000;

}  // namespace

std::int64_t Timeline::Place(std::int32_t stamp) {
    std::int64_t time = stamp + shift;
    if (jumped && stamp + formerShift >= former - Disorder &&
        stamp + formerShift - former < time - latest) {
        shift = formerShift;  // only the line before this one was out of order
        time = stamp + shift;
        latest = former;
    }
    jumped = false;
    if (latest >= 0 && time < latest - Disorder) {
        if (time + Day - latest < Day / 2) {
            shift += Day;
            time += Day;
        } else if (former >= 0 && time >= former - Disorder && latest - former > Disorder) {
            latest = former;  // the previous stamp was too late; this one is right
            ++jumps;
        } else {
            formerShift = shift;
            former = latest;
            shift += latest - time;
            time = latest;
            jumped = true;
            ++jumps;
        }
    }
    if (!jumped) {
        former = latest;
    }
    latest = std::max(latest, time);
    return time;
}

}  // namespace orv::log
