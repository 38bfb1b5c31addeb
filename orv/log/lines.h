// A log's bytes cut into its lines.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orv::log {

// Milliseconds of the day from "hh:mm:ss.mmm" and a tab at the start of `bytes`.
std::optional<std::int32_t> ReadStamp(std::string_view bytes);

struct Line {
    std::int32_t stamp;     // milliseconds of the day
    std::uint64_t number;   // in the file, from 1
    std::string_view text;  // behind the tab, without the line end
    bool complete;          // false: the file ends before the line does
};

// Goes through the lines of a text. A line ends where a line feed is followed by the next stamp or
// by the end, so that a text with line feeds in it stays one line. An advertisement's line goes on
// until its name is closed, because a name may hold what looks like a whole line.
class LineReader {
  public:
    // `firstLine` is the number of the first line of `bytes` in its file.
    explicit LineReader(std::string_view bytes, std::uint64_t firstLine = 1)
        : rest(bytes), nextNumber(firstLine) {}

    std::optional<Line> Next();

    // Lines passed over because they began with no stamp.
    std::uint64_t StrayLines() const { return strayLines; }
    std::uint64_t NextNumber() const { return nextNumber; }

  private:
    void SkipStrayLines();
    void Take(std::size_t length);

    std::string_view rest;
    std::uint64_t nextNumber;
    std::uint64_t strayLines = 0;
};

}  // namespace orv::log
