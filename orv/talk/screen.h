// Shows a conversation as permanent lines and, on a terminal, the counters and the typed line
// below.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "orv/talk/line_editor.h"

namespace orv {

struct Counters {
    std::uint64_t sent = 0;
    std::uint64_t received = 0;
    std::uint64_t blocks = 0;       // blocks that the system confirmed
    std::uint64_t unconfirmed = 0;  // blocks that may not have arrived
    std::uint64_t refused = 0;      // lines that were not sent because they are invalid
};

class Screen {
  public:
    // If `hex` is set, shows bytes as hexadecimal digits and as letters. If `interactive` is set, a
    // user types on a terminal.
    Screen(bool hex, bool interactive);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void ShowSent(std::string_view bytes);
    // Shows received bytes. An incomplete character at the end is shown by the next call; call this
    // with empty `bytes` to show it at once.
    void ShowReceived(std::string_view bytes);
    void ShowNote(std::string_view text);
    void ShowTyped(const Counters& counters, const LineEditor& typed);

  private:
    void ShowBytes(char mark, std::string_view bytes);
    void AddLine(const std::string& line);

    bool hex;
    bool interactive;
    std::string unfinished;  // incomplete received character
    std::string prompt;
};

}  // namespace orv
