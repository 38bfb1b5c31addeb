#include "orv/talk/line_editor.h"

#include <algorithm>

namespace orv {

namespace {

constexpr std::size_t HistoryLimit = 500;
constexpr std::size_t LongestParameters = 16;

constexpr char Control(char letter) {
    return static_cast<char>(letter - '@');
}
constexpr char EscapeKey = 27;
constexpr char Delete = 127;  // most terminals send this for the backspace key

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

std::size_t LineEditor::Before() const {
    std::size_t at = cursor;
    while (at > 0 && IsContinuation(text[--at])) {
    }
    return at;
}

std::size_t LineEditor::After() const {
    std::size_t at = std::min(cursor + 1, text.size());
    while (at < text.size() && IsContinuation(text[at])) {
        ++at;
    }
    return at;
}

void LineEditor::Erase(std::size_t from, std::size_t to) {
    text.erase(from, to - from);
    cursor = from;
}

void LineEditor::Recall(std::size_t entry) {
    if (entry > history.size()) {
        return;
    }
    if (recalled == history.size()) {
        draft = text;
    }
    recalled = entry;
    text = entry < history.size() ? history[entry] : draft;
    cursor = text.size();
}

void LineEditor::Finish(std::vector<std::string>& lines) {
    lines.push_back(text);
    if (!text.empty() && (history.empty() || history.back() != text)) {
        history.push_back(text);
    }
    if (history.size() > HistoryLimit) {
        history.erase(history.begin());
    }
    recalled = history.size();
    Erase(0, text.size());
}

// Processes the end of an escape sequence. Cursor keys send "ESC[A" or, with modifiers, "ESC[1;5A";
// other keys send "ESC[3~".
void LineEditor::TakeSequence(char last) {
    if (last == '~') {
        const std::string number = parameters.substr(0, parameters.find(';'));
        last = number == "1" || number == "7" ? 'H' : number == "4" || number == "8" ? 'F' : '~';
        if (number == "3") {
            Erase(cursor, After());
        }
    }
    switch (last) {
        case 'A':
            return Recall(recalled - 1);
        case 'B':
            return Recall(recalled + 1);
        case 'C':
            cursor = After();
            return;
        case 'D':
            cursor = Before();
            return;
        case 'H':
            cursor = 0;
            return;
        case 'F':
            cursor = text.size();
            return;
        default:
            return;
    }
}

void LineEditor::TakeControl(char key) {
    switch (key) {
        case Delete:
        case Control('H'):
            return Erase(Before(), cursor);
        case Control('A'):
            return TakeSequence('H');
        case Control('E'):
            return TakeSequence('F');
        case Control('K'):
            return Erase(cursor, text.size());
        case Control('U'):
            return Erase(0, text.size());
        case Control('D'):
        case Control('Z'):  // ends the input on Windows
            ended = ended || text.empty();
            return;
        default:
            return;
    }
}

void LineEditor::TakeKey(char key, std::vector<std::string>& lines) {
    if (escape == Escape::Begun) {
        escape = key == '[' || key == 'O' ? Escape::Sequence : Escape::None;
        parameters.clear();
    } else if (escape == Escape::Sequence && (key < '@' || key > '~')) {
        parameters.append(parameters.size() < LongestParameters ? 1 : 0, key);
    } else if (escape == Escape::Sequence) {
        escape = Escape::None;
        TakeSequence(key);
    } else if (key == EscapeKey) {
        escape = Escape::Begun;
    } else if (key == '\n' && afterReturn) {
        // Ignores LF after CR, because both are one line end.
    } else if (key == '\r' || key == '\n') {
        Finish(lines);
    } else if (key == '\t' || (key != Delete && static_cast<unsigned char>(key) >= ' ')) {
        text.insert(cursor++, 1, key);
    } else {
        TakeControl(key);
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
