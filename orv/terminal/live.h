// Lines that are drawn again in their place.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orv::terminal {

// Only for a terminal. The cursor is hidden and long lines are cut by the terminal until this is
// destroyed; the lines drawn last stay, with the cursor below them.
class LiveLines {
  public:
    LiveLines();
    ~LiveLines();
    LiveLines(const LiveLines&) = delete;
    LiveLines& operator=(const LiveLines&) = delete;

    // Fewer lines than the terminal has rows.
    void Draw(const std::vector<std::string>& lines);
    void Clear();

  private:
    std::size_t drawn = 0;
};

}  // namespace orv::terminal
