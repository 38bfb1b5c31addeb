// The system's header comes last: its macros have names that our headers declare.
// clang-format off
#include "platform/log_file.h"

#include <algorithm>

#include <windows.h>
// clang-format on

namespace orv::system {

namespace {

bool OpenThen(const char* path, ::DWORD access, ::DWORD creation, std::string_view bytes) {
    const HANDLE file = CreateFileA(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    creation, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    while (!bytes.empty()) {
        constexpr std::size_t LargestWrite = 1 << 30;
        const auto size = static_cast<::DWORD>(std::min(bytes.size(), LargestWrite));
        ::DWORD written = 0;
        if (!WriteFile(file, bytes.data(), size, &written, nullptr) || written == 0) {
            break;
        }
        bytes.remove_prefix(written);
    }
    CloseHandle(file);
    return true;
}

}  // namespace

bool EmptyFile(const char* path) {
    return OpenThen(path, GENERIC_WRITE, CREATE_ALWAYS, {});
}

bool AppendToFile(const char* path, std::string_view bytes) {
    return OpenThen(path, FILE_APPEND_DATA, OPEN_ALWAYS, bytes);
}

}  // namespace orv::system
