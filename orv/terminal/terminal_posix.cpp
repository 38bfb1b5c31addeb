#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include "orv/terminal/terminal.h"

namespace orv::terminal {

namespace {

volatile sig_atomic_t interrupted = 0;  // number of the received signal, or 0

termios before;
volatile sig_atomic_t isRaw = 0;

// The second interrupt restores the terminal and ends the program, because a pending call may never
// return.
void OnSignal(int number) {
    if (interrupted) {
        constexpr char Usual[] = "\033[?7h\033[?25h";
        if (isRaw) {
            tcsetattr(STDIN_FILENO, TCSANOW, &before);
        }
        if (isatty(STDOUT_FILENO) && write(STDOUT_FILENO, Usual, sizeof Usual - 1) < 0) {
            // A failed write is ignored, because the program ends.
        }
        signal(number, SIG_DFL);
        raise(number);
    }
    interrupted = number;
}

}  // namespace

std::vector<std::string> Start(int argc, char** argv) {
    return {argv + (argc > 0 ? 1 : 0), argv + argc};
}

bool IsOutput() {
    const char* kind = getenv("TERM");
    return isatty(STDOUT_FILENO) && kind && *kind && strcmp(kind, "dumb") != 0;
}

bool IsInput() {
    return isatty(STDIN_FILENO);
}

Size SizeOf() {
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0) {
        return {80, 24};
    }
    return {size.ws_col, size.ws_row};
}

void CatchInterrupts() {
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaction(number, &action, nullptr);
    }
    signal(SIGPIPE, SIG_IGN);  // a write to a closed pipe fails instead of ending the program
}

bool IsInterrupted() {
    return interrupted || ferror(stdout);
}

const char* Interruption() {
    switch (interrupted) {
        case SIGINT:
            return "Ctrl-C";
        case SIGTERM:
            return "SIGTERM";
        case SIGHUP:
            return "SIGHUP";
        default:
            return "the end of the output";
    }
}

RawInput::RawInput() {
    isRaw = IsInput() && tcgetattr(STDIN_FILENO, &before) == 0;
    if (isRaw) {
        termios raw = before;
        raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
        raw.c_cc[VMIN] = 1;
        raw.c_cc[VTIME] = 0;
        tcsetattr(STDIN_FILENO, TCSANOW, &raw);
    }
}

RawInput::~RawInput() {
    if (isRaw) {
        tcsetattr(STDIN_FILENO, TCSANOW, &before);
        isRaw = 0;
    }
}

std::optional<std::string> ReadInput() {
    char bytes[4096];
    for (;;) {
        const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
        if (count > 0) {
            return std::string(bytes, static_cast<std::size_t>(count));
        }
        if (count == 0 || errno != EINTR) {
            return std::nullopt;
        }
    }
}

}  // namespace orv::terminal
