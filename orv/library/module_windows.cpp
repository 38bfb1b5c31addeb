#include <windows.h>

#include <cstring>
#include <vector>

#include "orv/library/module.h"

namespace orv::module {

const char* const LibraryName = "quelvixwinlib.dll";

namespace {

std::filesystem::path FileNameOf(HMODULE module) {
    std::vector<wchar_t> path(32768);  // maximum length of a path
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

// Loads the DLL by its full path, and the DLLs that it needs only from the system's directory.
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

// Reads the version without VERSION.dll, because Windows may load that DLL from the program's
// directory, where anybody could place it.
std::string VersionOf(Handle handle, const std::filesystem::path&) {
    const auto module = static_cast<HMODULE>(handle);
    // VS_FIXEDFILEINFO follows three 16-bit words and the key "VS_VERSION_INFO", padded to 4 bytes.
    constexpr std::size_t FactsAt = 40;
    constexpr WORD VersionResource =
        16;  // value of RT_VERSION, which has the wrong type in builds without UNICODE
    const HRSRC entry =
        FindResourceW(module, MAKEINTRESOURCEW(VS_VERSION_INFO), MAKEINTRESOURCEW(VersionResource));
    const HGLOBAL resource = entry ? LoadResource(module, entry) : nullptr;
    const void* const bytes = resource ? LockResource(resource) : nullptr;
    VS_FIXEDFILEINFO facts{};
    if (!bytes || SizeofResource(module, entry) < FactsAt + sizeof facts) {
        return {};
    }
    std::memcpy(&facts, static_cast<const char*>(bytes) + FactsAt, sizeof facts);
    return facts.dwSignature != VS_FFI_SIGNATURE
               ? ""
               : std::to_string(HIWORD(facts.dwFileVersionMS)) + "." +
                     std::to_string(LOWORD(facts.dwFileVersionMS)) + "." +
                     std::to_string(HIWORD(facts.dwFileVersionLS));
}

std::filesystem::path OwnFolder() {
    return FileNameOf(nullptr).parent_path();
}

}  // namespace orv::module
