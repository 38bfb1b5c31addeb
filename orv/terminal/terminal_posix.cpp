#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "orv/background.h"
#include "orv/terminal/terminal.h"

namespace orv::terminal {

namespace {

std::atomic<int> interrupted{0};  // number of the received signal, or 0

termios before;
std::atomic<bool> isRaw{false};

void RestoreTerminal() {
    constexpr char Usual[] = "\033[?7h\033[?25h";
    if (isRaw) {
        tcsetattr(STDIN_FILENO, TCSANOW, &before);
    }
    if (isatty(STDOUT_FILENO) && write(STDOUT_FILENO, Usual, sizeof Usual - 1) < 0) {
        // A failed write is ignored, because the program ends.
    }
}

// Runs on a thread of its own. A signal handler could interrupt any function and may call only a
// few itself. The thread sanitizer of clang 14 also loses signals just before a blocking call.
void AwaitSignals(sigset_t signals) {
    for (int number = 0; sigwait(&signals, &number) == 0;) {
        if (interrupted.exchange(number) != 0) {
            RestoreTerminal();
            signal(number, SIG_DFL);
            pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
            raise(number);
        }
    }
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
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present = {};
        sigaction(number, nullptr, &present);
        // nohup, for instance, starts programs with an ignored signal.
        if (present.sa_handler != SIG_IGN) {
            sigaddset(&signals, number);
        }
    }
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);  // later threads inherit this
    LeaveRunning(std::thread(AwaitSignals, signals));
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
        isRaw = false;
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
