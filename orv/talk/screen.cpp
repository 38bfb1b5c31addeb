#include "orv/talk/screen.h"

#include "orv/scan/device_text.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv {

namespace {

constexpr std::size_t BytesOfHexLine = 16;

std::string HexLine(std::string_view bytes) {
    std::string digits;
    std::string letters;
    for (const char byte : bytes) {
        digits += HexText({&byte, 1}) + ' ';
        letters += byte >= ' ' && byte <= '~' ? byte : '.';
    }
    return Fitted(digits, 3 * BytesOfHexLine) + ' ' + letters;
}

}  // namespace

Screen::Screen(bool hexShown, bool isInteractive) : hex(hexShown), interactive(isInteractive) {}

Screen::~Screen() {
    ShowReceived({});
    if (interactive) {
        terminal::Write("\r\033[K");
    }
}

void Screen::AddLine(const std::string& line) {
    terminal::Write((interactive ? "\r\033[K" : "") + line + '\n' + prompt);
}

void Screen::ShowBytes(char mark, std::string_view bytes) {
    while (!bytes.empty()) {
        const std::size_t end = hex ? BytesOfHexLine : bytes.find('\n');
        const std::string_view line = bytes.substr(0, end);
        AddLine(std::string{mark, ' '} + (hex ? HexLine(line) : Printable(line)));
        bytes.remove_prefix(std::min(bytes.size(), line.size() + (hex ? 0 : 1)));
    }
}

void Screen::ShowSent(std::string_view bytes) {
    ShowBytes('>', bytes);
}

void Screen::ShowReceived(std::string_view bytes) {
    const bool wait = !bytes.empty() && !hex;
    const std::string whole = unfinished.append(bytes);
    const std::size_t kept = wait ? UnfinishedBytes(whole) : 0;
    unfinished = whole.substr(whole.size() - kept);
    ShowBytes('<', std::string_view(whole).substr(0, whole.size() - kept));
}

void Screen::ShowNote(std::string_view text) {
    AddLine("* " + std::string(text));
}

void Screen::ShowTyped(const Counters& counters, const std::string& typed) {
    if (!interactive) {
        return;
    }
    const std::size_t columns = terminal::SizeOf().columns;
    std::string line = "[" + std::to_string(counters.sent) + " sent, " +
                       std::to_string(counters.received) + " received] ";
    if (line.size() + 10 > columns) {
        line.clear();
    }
    // The end of what is typed has to be seen.
    std::string shown = Printable(typed);
    while (!shown.empty() && line.size() + ColumnsOf(shown) + 1 > columns) {
        shown.erase(0, FirstCharacter(shown).bytes);
    }
    const std::string drawn = "\r\033[K" + line + shown;
    if (drawn != prompt) {
        prompt = drawn;
        terminal::Write(prompt);
    }
}

}  // namespace orv
