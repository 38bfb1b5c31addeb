// Lines that are redrawn at the same place of a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orv::terminal {

// Hides the cursor and disables line wrapping until this object is destroyed. Use it only on a
// terminal. The last lines remain, with the cursor below them.
class LiveLines {
  public:
    LiveLines();
    ~LiveLines();
    LiveLines(const LiveLines&) = delete;
    LiveLines& operator=(const LiveLines&) = delete;

    // `lines` must be fewer than the rows of the terminal.
    void Draw(const std::vector<std::string>& lines);
    void Clear();

  private:
    std::size_t drawn = 0;
};

}  // namespace orv::terminal
