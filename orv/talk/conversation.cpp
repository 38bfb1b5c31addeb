#include "orv/talk/conversation.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <iterator>
#include <string_view>
#include <utility>

#include "orv/address.h"

namespace orv {

namespace {

constexpr int PollMs = 20;
constexpr std::size_t MostAtOnce = 65536;
constexpr std::size_t LongestLine = 1 << 20;

// Converts pairs of hexadecimal digits to bytes, ignoring spaces.
std::optional<std::string> BytesOfHex(std::string_view text) {
    std::string digits;
    std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
                 [](char letter) { return letter != ' ' && letter != '\t'; });
    const bool good = std::all_of(digits.begin(), digits.end(), [](char letter) {
        return std::isxdigit(static_cast<unsigned char>(letter));
    });
    if (!good || digits.size() % 2 != 0) {
        return std::nullopt;
    }
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

}  // namespace

Conversation::Conversation(Link& openLink, const ConversationOptions& chosen,
                           TalkRecording& talkRecording)
    : options(chosen),
      recording(talkRecording),
      interactive(terminal::IsInput() && terminal::IsOutput()),
      link(openLink),
      screen(chosen.hex, interactive) {
    if (interactive) {
        raw.emplace();
        screen.ShowNote("connected to " + AddressText(link.Address()) + ", Ctrl-D ends");
    }
}

Counters Conversation::Run() {
    using namespace std::chrono;
    std::optional<steady_clock::time_point> inputEnd;
    const auto isOver = [&] {
        return inputEnd && (interactive ||
                            steady_clock::now() - *inputEnd >= duration<double>(options.seconds));
    };
    while (!isOver() && !terminal::IsInterrupted()) {
        Receive();
        if (!inputEnd && TakeInput()) {
            inputEnd = steady_clock::now();
        }
        screen.ShowTyped(counters, editor);
        terminal::Pause(PollMs);
    }
    Receive();
    return counters;
}

bool Conversation::TakeInput() {
    bool ended = false;
    const std::string bytes = input.Take(ended);
    for (const std::string& line : interactive ? editor.Take(bytes) : TakeLines(bytes, ended)) {
        Send(line);
    }
    return ended || editor.HasEnded();
}

std::vector<std::string> Conversation::TakeLines(const std::string& bytes, bool ended) {
    std::vector<std::string> lines;
    unfinished += bytes;
    std::size_t begin = 0;
    for (std::size_t end; (end = unfinished.find('\n', begin)) != std::string::npos;) {
        const bool hasReturn = end > begin && unfinished[end - 1] == '\r';
        if (!std::exchange(isTooLong, false)) {
            lines.push_back(unfinished.substr(begin, end - begin - (hasReturn ? 1 : 0)));
        }
        begin = end + 1;
    }
    unfinished.erase(0, begin);
    if (isTooLong || unfinished.size() > LongestLine) {
        if (!isTooLong) {
            Refuse("a line is longer than 1048576 bytes: use orv send");
        }
        isTooLong = true;
        unfinished.clear();
    }
    if (ended && !unfinished.empty()) {
        lines.push_back(std::exchange(unfinished, {}));
    }
    return lines;
}

void Conversation::Send(const std::string& line) {
    const auto bytes = options.hex ? BytesOfHex(line) : line + options.lineEnd;
    if (!bytes) {
        Refuse("the line is not hexadecimal, such as 48 65 6C");
        return;
    }
    for (std::string_view rest = *bytes; !rest.empty() && !terminal::IsInterrupted();) {
        const std::string_view block = rest.substr(0, options.block);
        screen.ShowSent(block);
        if (link.Send(block)) {
            counters.sent += block.size();
            ++counters.blocks;
        } else {
            ++counters.unconfirmed;
            screen.ShowNote(
                "the system did not finish the write of a block, which may have arrived");
        }
        rest.remove_prefix(block.size());
        Receive();
    }
}

void Conversation::Refuse(const char* why) {
    screen.ShowNote(std::string("not sent: ") + why);
    ++counters.refused;
}

void Conversation::Receive() {
    const std::string bytes = link.Receive(MostAtOnce);
    counters.received += bytes.size();
    recording.Add(bytes);
    screen.ShowReceived(bytes);
}

}  // namespace orv
