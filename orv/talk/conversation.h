// Sends what the user types, and shows what the device sends.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "orv/recording/recording.h"
#include "orv/talk/line_editor.h"
#include "orv/talk/screen.h"
#include "orv/terminal/terminal.h"
#include "orv/transfer/input.h"
#include "orv/transfer/link.h"

namespace orv {

struct ConversationOptions {
    std::size_t block;    // maximum number of bytes in a write
    std::string lineEnd;  // appended to each line that is sent
    bool hex = false;     // input and output are hexadecimal digits
    double seconds = 1;   // time to wait for answers after the end of piped input
};

class Conversation {
  public:
    Conversation(Link& link, const ConversationOptions& options, TalkRecording& recording);

    // Runs until the end of the input or Ctrl-C. After the end of piped input, waits for answers.
    Counters Run();

  private:
    // Returns true if the input has ended.
    bool TakeInput();
    // Returns the lines of piped input without LF or CRLF. Omits lines that are too long.
    std::vector<std::string> TakeLines(const std::string& bytes, bool ended);
    void Send(const std::string& line);
    void Refuse(const char* why);
    void Receive();

    const ConversationOptions& options;
    TalkRecording& recording;
    const bool interactive;
    Link& link;
    Screen screen;
    std::optional<terminal::RawInput> raw;
    Input input{terminal::ReadInput};
    LineEditor editor;
    std::string unfinished;  // incomplete last line of piped input
    bool isTooLong = false;  // the beginning of `unfinished` was discarded
    Counters counters;
};

}  // namespace orv
