// The operating system functions for Windows.
//
// The system's header is included last: it defines macros with names that our headers declare.
// clang-format off
#define _CRT_RAND_S  // declares rand_s, which is in msvcrt.dll and imports no other DLL
#include "platform/system.h"

#include <algorithm>
#include <cstdlib>

#include "platform/failure.h"
#include <windows.h>
// clang-format on

namespace orv::system {

namespace {

// Returns the module that contains this code, or null. `flags` control its reference count.
HMODULE OwnModule(::DWORD flags) {
    const auto address = reinterpret_cast<LPCWSTR>(&ReadModulePath);
    HMODULE module = nullptr;
    return GetModuleHandleExW(flags | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, address, &module)
               ? module
               : nullptr;
}

// Returns whether `path`, in the code page of file names, is the path of the module. The system
// substitutes similar characters for those that the code page lacks. Compares only the beginning,
// because the system cuts long paths and removes an incomplete multibyte character at the cut.
bool LeadsBack(const char* path, HMODULE module) {
    wchar_t names[2][MAX_PATH];
    const std::wstring_view own(names[0], GetModuleFileNameW(module, names[0], MAX_PATH));
    const UINT codePage = AreFileApisANSI() ? CP_ACP : CP_OEMCP;
    const int length = MultiByteToWideChar(codePage, 0, path, -1, names[1], MAX_PATH);
    const std::wstring_view back(names[1], length > 0 ? static_cast<std::size_t>(length - 1) : 0);
    return !back.empty() && own.substr(0, back.size()) == back;
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

SRWLOCK* SlimLockIn(LockState& lock) {
    static_assert(sizeof(SRWLOCK) <= sizeof(LockState));
    return reinterpret_cast<SRWLOCK*>(lock.words);
}

}  // namespace

bool ReadModulePath(char (&path)[LongestPath]) {
    const HMODULE module = OwnModule(0);
    const ::DWORD length = module ? GetModuleFileNameA(module, path, MAX_PATH) : 0;
    path[MAX_PATH - 1] = '\0';  // Wine does not terminate a path that it cuts
    return length != 0 && LeadsBack(path, module);
}

void KeepModuleLoaded() {
    if (!OwnModule(GET_MODULE_HANDLE_EX_FLAG_PIN)) {
        RaiseFailure(HRESULT_FROM_WIN32(GetLastError()));
    }
}

void AcquireLock(LockState& lock) noexcept {
    AcquireSRWLockExclusive(SlimLockIn(lock));
}

void ReleaseLock(LockState& lock) noexcept {
    ReleaseSRWLockExclusive(SlimLockIn(lock));
}

std::tm ToLocalTime(std::time_t seconds) {
    std::tm local{};
    const __time64_t wide = seconds;
    _localtime64_s(&local, &wide);
    return local;
}

std::uint64_t RandomBits() {
    unsigned int high = 0;
    unsigned int low = 0;
    if (rand_s(&high) != 0 || rand_s(&low) != 0) {
        RaiseFailure(E_FAIL);
    }
    return std::uint64_t{high} << 32 | low;
}

bool EmptyFile(const char* path) {
    return OpenThen(path, GENERIC_WRITE, CREATE_ALWAYS, {});
}

bool AppendToFile(const char* path, std::string_view bytes) {
    return OpenThen(path, FILE_APPEND_DATA, OPEN_ALWAYS, bytes);
}

}  // namespace orv::system
