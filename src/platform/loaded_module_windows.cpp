// The system's header comes last: its macros have names that our headers declare.
// clang-format off
#include "platform/loaded_module.h"

#include <string_view>

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

// Returns whether `path`, in the code page of file names, is the path of the module. Returns false
// if the system replaced characters that the code page lacks. Compares only the beginning, because
// the system cuts long paths and drops an incomplete character at the cut.
bool LeadsBack(const char* path, HMODULE module) {
    wchar_t names[2][MAX_PATH];
    const std::wstring_view own(names[0], GetModuleFileNameW(module, names[0], MAX_PATH));
    const UINT codePage = AreFileApisANSI() ? CP_ACP : CP_OEMCP;
    const int length = MultiByteToWideChar(codePage, 0, path, -1, names[1], MAX_PATH);
    const std::wstring_view back(names[1], length > 0 ? static_cast<std::size_t>(length - 1) : 0);
    return !back.empty() && own.substr(0, back.size()) == back;
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

}  // namespace orv::system
