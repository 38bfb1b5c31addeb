// A process that opens the log with the given sharing mode, and prints y or n for success or
// failure. For each input line, it then prints the bytes that were added to the log.
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
    if (count != 3) {
        return 2;
    }
    const auto sharing = static_cast<DWORD>(std::atoi(arguments[2]));
    const HANDLE file = CreateFileA(arguments[1], GENERIC_READ, sharing, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    _setmode(_fileno(stdout), _O_BINARY);
    std::putchar(file == INVALID_HANDLE_VALUE ? 'n' : 'y');
    std::fflush(stdout);
    while (std::getchar() != EOF) {
        char bytes[4096];
        DWORD size = 0;
        ReadFile(file, bytes, sizeof bytes, &size, nullptr);
        std::fwrite(&size, sizeof size, 1, stdout);
        std::fwrite(bytes, size, 1, stdout);
        std::fflush(stdout);
    }
    return 0;
}
