#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orv::log {

// Reads "hh:mm:ss.mmm" and a tab at the start of `bytes`. Returns the milliseconds since midnight.
std::optional<std::int32_t> ReadStamp(std::string_view bytes);

struct Line {
    std::int32_t stamp;     // milliseconds since midnight
    std::uint64_t number;   // line number in the file, from 1
    std::string_view text;  // after the tab, without the line end
    bool complete;          // false if the file ends within the line
};

// Iterates over the lines of a log. A line ends only before a stamp or the end of the log, so its
// text may contain line feeds. An advertisement's line ends after its name, even if the name
// contains stamps.
class LineReader {
  public:
    // `firstLine` is the number of the first line. If `isEnd` is false, Next stops before a line
    // that may continue after `bytes`.
    explicit LineReader(std::string_view bytes, std::uint64_t firstLine = 1, bool isEnd = true)
        : rest(bytes), nextNumber(firstLine), isLast(isEnd) {}

    std::optional<Line> Next();

    std::string_view Rest() const { return rest; }

    // Returns the number of skipped lines, which have no time stamp.
    std::uint64_t StrayLines() const { return strayLines; }
    std::uint64_t NextNumber() const { return nextNumber; }

  private:
    void SkipStrayLines();
    void Take(std::size_t length);

    std::string_view rest;
    std::uint64_t nextNumber;
    bool isLast;
    std::uint64_t strayLines = 0;
};

// Converts stamps, which have no date, to one time scale. Stamps may step back a little between
// threads, start again at midnight, and jump when the clock is set. A single wrong stamp
// does not affect other lines.
class Timeline {
  public:
    // Returns the time of the next line in ms since the start of the first day.
    std::int64_t Place(std::int32_t stamp);

    // Returns how often the stamps jumped back, not counting midnight.
    int Jumps() const { return jumps; }

  private:
    std::int64_t shift = 0;        // ms to add to a stamp
    std::int64_t formerShift = 0;  // `shift` before the latest jump of the clock
    std::int64_t latest = -1;      // largest time so far, or -1 before the first line
    std::int64_t former = -1;      // `latest` before the previous line
    bool jumped = false;           // the stamps jumped at the previous line
    int jumps = 0;
};

}  // namespace orv::log
