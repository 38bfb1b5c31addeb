#include <windows.h>

#include <vector>

#include "orv/library/module.h"

namespace orv::module {

namespace {

std::filesystem::path FileNameOf(HMODULE module) {
    std::vector<wchar_t> path(32768);  // the longest there is
    GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

std::string SystemMessage(DWORD error) {
    wchar_t* text = nullptr;
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, error, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::wstring message(text ? text : L"", length);
    LocalFree(text);
    message.erase(message.find_last_not_of(L" .\r\n") + 1);
    const std::u8string bytes = std::filesystem::path(message).u8string();
    return std::string(bytes.begin(), bytes.end()) + " (error " + std::to_string(error) + ")";
}

}  // namespace

// By its full path, and what it needs itself from the system's folder only.
Handle Load(const std::filesystem::path& file, std::string& error) {
    const std::filesystem::path path = std::filesystem::absolute(file).make_preferred();
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!module) {
        error = SystemMessage(GetLastError());
    }
    return module;
}

void* Find(Handle module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

std::filesystem::path FileOf(Handle module, const std::filesystem::path&) {
    return FileNameOf(static_cast<HMODULE>(module));
}

std::string VersionOf(const std::filesystem::path& file) {
    DWORD ignored = 0;
    std::vector<char> description(GetFileVersionInfoSizeW(file.c_str(), &ignored));
    VS_FIXEDFILEINFO* facts = nullptr;
    UINT length = 0;
    if (description.empty() ||
        !GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(description.size()),
                             description.data()) ||
        !VerQueryValueW(description.data(), L"\\", reinterpret_cast<void**>(&facts), &length)) {
        return {};
    }
    return std::to_string(HIWORD(facts->dwFileVersionMS)) + "." +
           std::to_string(LOWORD(facts->dwFileVersionMS)) + "." +
           std::to_string(HIWORD(facts->dwFileVersionLS));
}

std::filesystem::path OwnFolder() {
    return FileNameOf(nullptr).parent_path();
}

}  // namespace orv::module
