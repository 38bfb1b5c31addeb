// The line that somebody types while other lines appear above it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv {

class LineEditor {
  public:
    // Takes keys as the terminal sends them. Returns the lines that were finished by Enter.
    std::vector<std::string> Take(std::string_view keys);

    const std::string& Text() const { return text; }
    // Ctrl-D was pressed in an empty line.
    bool HasEnded() const { return ended; }

  private:
    void TakeKey(char key, std::vector<std::string>& lines);
    void EraseLast();

    enum class Escape { None, Begun, Sequence };

    std::string text;
    Escape escape = Escape::None;  // within the bytes of a key that is no character
    bool afterReturn = false;
    bool ended = false;
};

}  // namespace orv
