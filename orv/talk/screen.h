// What a conversation looks like: lines that stay, and on a terminal, below them, the counters and
// what is being typed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orv {

struct Counters {
    std::uint64_t sent = 0;
    std::uint64_t received = 0;
    std::uint64_t blocks = 0;       // that were confirmed
    std::uint64_t unconfirmed = 0;  // blocks of which nobody knows whether they arrived
    std::uint64_t refused = 0;      // lines that were not sent, because they mean no bytes
};

class Screen {
  public:
    // `hex`: bytes are shown as hexadecimal digits, with their letters behind them.
    // `interactive`: there is somebody who types, and sees.
    Screen(bool hex, bool interactive);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void ShowSent(std::string_view bytes);
    // Bytes that came at once; empty: nothing came for a while.
    void ShowReceived(std::string_view bytes);
    void ShowNote(std::string_view text);
    void ShowTyped(const Counters& counters, const std::string& typed);

  private:
    void ShowBytes(char mark, std::string_view bytes);
    void AddLine(const std::string& line);

    bool hex;
    bool interactive;
    std::string unfinished;  // received, but not yet a whole character
    std::string prompt;
};

}  // namespace orv
