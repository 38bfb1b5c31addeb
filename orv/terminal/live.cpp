#include "orv/terminal/live.h"

#include "orv/terminal/terminal.h"

namespace orv::terminal {

LiveLines::LiveLines() {
    Write("\033[?25l\033[?7l");
}

LiveLines::~LiveLines() {
    Write("\033[?7h\033[?25h");
}

void LiveLines::Draw(const std::vector<std::string>& lines) {
    std::string text = "\r";
    if (drawn > 0) {
        text += "\033[" + std::to_string(drawn) + "A";
    }
    for (const std::string& line : lines) {
        text += line + "\033[K\n";
    }
    Write(text + "\033[J");
    drawn = lines.size();
}

void LiveLines::Clear() {
    Draw({});
}

}  // namespace orv::terminal
