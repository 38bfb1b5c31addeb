#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <windows.h>
// Must follow windows.h.
#include <shellapi.h>

#include <atomic>

#include "orv/terminal/terminal.h"

namespace orv::terminal {

namespace {

constexpr DWORD NotInterrupted = ~DWORD{0};
std::atomic<DWORD> interrupted{NotInterrupted};  // type of the received control event
bool understandsEscapes = false;
DWORD before = 0;
bool isRaw = false;

std::string Utf8(const wchar_t* text, int length) {
    std::string bytes(static_cast<std::size_t>(length) * 3 + 1, '\0');
    const int count = WideCharToMultiByte(CP_UTF8, 0, text, length, bytes.data(),
                                          static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(count));
    return bytes;
}

// The system handles the second interrupt and ends the program, because a pending call may never
// return.
BOOL WINAPI OnControl(DWORD event) {
    return interrupted.exchange(event) == NotInterrupted;
}

HANDLE Input() {
    return GetStdHandle(STD_INPUT_HANDLE);
}

}  // namespace

std::vector<std::string> Start(int, char**) {
    // Binary mode keeps line ends unchanged.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stdin), _O_BINARY);
    SetConsoleOutputCP(CP_UTF8);
    DWORD mode = 0;
    const HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    understandsEscapes = GetConsoleMode(console, &mode) &&
                         SetConsoleMode(console, mode | 0x0004 /* virtual terminal processing */);

    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(Utf8(wide[i], static_cast<int>(wcslen(wide[i]))));
    }
    LocalFree(wide);
    return arguments;
}

bool IsOutput() {
    return understandsEscapes;
}

bool IsInput() {
    DWORD mode = 0;
    return GetConsoleMode(Input(), &mode) != 0;
}

Size SizeOf() {
    CONSOLE_SCREEN_BUFFER_INFO info;
    if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info)) {
        return {80, 24};
    }
    return {static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1),
            static_cast<std::size_t>(info.srWindow.Bottom - info.srWindow.Top + 1)};
}

void CatchInterrupts() {
    SetConsoleCtrlHandler(OnControl, TRUE);
}

bool IsInterrupted() {
    return interrupted != NotInterrupted || ferror(stdout);
}

const char* Interruption() {
    switch (interrupted) {
        case CTRL_C_EVENT:
            return "Ctrl-C";
        case CTRL_BREAK_EVENT:
            return "Ctrl-Break";
        case NotInterrupted:
            return "the end of the output";
        default:
            return "the end of the session";
    }
}

RawInput::RawInput() {
    isRaw = GetConsoleMode(Input(), &before) != 0;
    if (isRaw) {
        // An old console rejects this mode.
        const DWORD raw = before & ~static_cast<DWORD>(ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT);
        if (!SetConsoleMode(Input(), raw | 0x0200 /* virtual terminal input */)) {
            SetConsoleMode(Input(), raw);
        }
    }
}

RawInput::~RawInput() {
    if (isRaw) {
        SetConsoleMode(Input(), before);
        isRaw = false;
    }
}

std::optional<std::string> ReadInput() {
    if (IsInput()) {
        wchar_t text[1024];
        DWORD count = 0;
        if (!ReadConsoleW(Input(), text, 1024, &count, nullptr) || count == 0) {
            return std::nullopt;
        }
        return Utf8(text, static_cast<int>(count));
    }
    char bytes[4096];
    const int count = _read(_fileno(stdin), bytes, sizeof bytes);
    if (count <= 0) {
        return std::nullopt;
    }
    return std::string(bytes, static_cast<std::size_t>(count));
}

}  // namespace orv::terminal
