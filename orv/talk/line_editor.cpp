#include "orv/talk/line_editor.h"

namespace orv {

namespace {

constexpr char EndOfInput = 4;  // Ctrl-D
constexpr char Backspace = 8;   // Ctrl-H
constexpr char EraseLine = 21;  // Ctrl-U
constexpr char EscapeKey = 27;
constexpr char Delete = 127;  // what most terminals send for the backspace key

}  // namespace

void LineEditor::EraseLast() {
    while (!text.empty()) {
        const bool continuation = (static_cast<unsigned char>(text.back()) & 0xC0) == 0x80;
        text.pop_back();
        if (!continuation) {
            return;
        }
    }
}

void LineEditor::TakeKey(char key, std::vector<std::string>& lines) {
    if (escape == Escape::Begun) {
        // Arrow keys are "ESC [ A" and the like; a sequence ends with a letter or "~".
        escape = key == '[' || key == 'O' ? Escape::Sequence : Escape::None;
    } else if (escape == Escape::Sequence) {
        escape = key >= '@' && key <= '~' ? Escape::None : Escape::Sequence;
    } else if (key == EscapeKey) {
        escape = Escape::Begun;
    } else if (key == '\n' && afterReturn) {
        // The second half of one line end.
    } else if (key == '\r' || key == '\n') {
        lines.push_back(text);
        text.clear();
    } else if (key == Delete || key == Backspace) {
        EraseLast();
    } else if (key == EraseLine) {
        text.clear();
    } else if (key == EndOfInput || key == 26 /* Ctrl-Z, the same on Windows */) {
        ended = ended || text.empty();
    } else if (key == '\t' || static_cast<unsigned char>(key) >= ' ') {
        text += key;
    }
    afterReturn = key == '\r';
}

std::vector<std::string> LineEditor::Take(std::string_view keys) {
    std::vector<std::string> lines;
    for (const char key : keys) {
        TakeKey(key, lines);
    }
    return lines;
}

}  // namespace orv
