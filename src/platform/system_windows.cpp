// The operating system's part on Windows.
//
// The system's header comes last: it makes macros of names that ours declare.
// clang-format off
#include "platform/system.h"

#include <algorithm>

#include "platform/failure.h"
#include <windows.h>
// clang-format on

namespace orv::system {

namespace {

// The module that holds this code. `flags` say what happens to its reference count.
HMODULE OwnModule(::DWORD flags) {
    const auto address = reinterpret_cast<LPCWSTR>(&ReadModulePath);
    HMODULE module = nullptr;
    return GetModuleHandleExW(flags | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, address, &module)
               ? module
               : nullptr;
}

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

bool ReadModulePath(char (&path)[LongestPath]) {
    const HMODULE module = OwnModule(0);
    return module && GetModuleFileNameA(module, path, MAX_PATH) != 0;
}

void KeepModuleLoaded() {
    if (!OwnModule(GET_MODULE_HANDLE_EX_FLAG_PIN)) {
        RaiseFailure(HRESULT_FROM_WIN32(GetLastError()));
    }
}

std::tm ToLocalTime(std::time_t seconds) {
    std::tm local{};
    const __time64_t wide = seconds;
    _localtime64_s(&local, &wide);
    return local;
}

bool EmptyFile(const char* path) {
    return OpenThen(path, GENERIC_WRITE, CREATE_ALWAYS, {});
}

bool AppendToFile(const char* path, std::string_view bytes) {
    return OpenThen(path, FILE_APPEND_DATA, OPEN_ALWAYS, bytes);
}

}  // namespace orv::system
