// The line that the user types while other lines appear above it.
//
// No library fits: readline (GPL) and libedit do not exist for Windows, Debian has no line editor
// for MinGW, and none supports counters before the line while other lines are printed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orv {

class LineEditor {
  public:
    // Processes keys as the terminal sends them. Returns the lines that Enter completed.
    std::vector<std::string> Take(std::string_view keys);

    const std::string& Text() const { return text; }
    // Returns the index in Text at which the next character is inserted.
    std::size_t Cursor() const { return cursor; }
    // Returns whether Ctrl-D was pressed in an empty line.
    bool HasEnded() const { return ended; }

  private:
    void TakeKey(char key, std::vector<std::string>& lines);
    void TakeControl(char key);
    void TakeSequence(char last);
    void Finish(std::vector<std::string>& lines);
    void Recall(std::size_t entry);
    void Erase(std::size_t from, std::size_t to);
    std::size_t Before() const;
    std::size_t After() const;

    enum class Escape { None, Begun, Sequence };

    std::string text;
    std::size_t cursor = 0;
    std::vector<std::string> history;  // finished lines, oldest first
    std::size_t recalled = 0;  // index of the line that is shown; history.size() for the new line
    std::string draft;         // the new line while an older one is shown
    Escape escape = Escape::None;
    std::string parameters;  // digits and semicolons of the escape sequence
    bool afterReturn = false;
    bool ended = false;
};

}  // namespace orv
