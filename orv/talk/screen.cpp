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

void Screen::ShowTyped(const Counters& counters, const LineEditor& typed) {
    if (!interactive) {
        return;
    }
    const std::size_t columns = terminal::SizeOf().columns;
    std::string line = "[" + std::to_string(counters.sent) + " sent, " +
                       std::to_string(counters.received) + " received] ";
    if (line.size() + 10 > columns) {
        line.clear();
    }
    // Cuts the start of the text before the cursor, so that the cursor remains visible.
    const std::size_t room = std::max<std::size_t>(columns, line.size() + 1) - line.size() - 1;
    std::string before = Printable(typed.Text().substr(0, typed.Cursor()));
    while (ColumnsOf(before) > room) {
        before.erase(0, FirstCharacter(before).bytes);
    }
    std::string after = Printable(typed.Text().substr(typed.Cursor()));
    const std::size_t left = room - ColumnsOf(before);
    if (ColumnsOf(after) > left) {
        after = Fitted(after, left);
    }
    std::string drawn = "\r\033[K" + line + before + after;
    if (!after.empty()) {
        drawn += "\033[" + std::to_string(ColumnsOf(after)) + "D";
    }
    if (drawn != prompt) {
        prompt = drawn;
        terminal::Write(prompt);
    }
}

}  // namespace orv
