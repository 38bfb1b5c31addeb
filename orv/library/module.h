// A library as the system loads it, and where this program itself lies.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace orv::module {

#ifdef _WIN32
constexpr const char* LibraryName = "quelvixwinlib.dll";
#else
constexpr const char* LibraryName = "libquelvixwinlib.so";
#endif

using Handle = void*;

// Null when it cannot be loaded; `error` is then the system's reason. A loaded one stays.
Handle Load(const std::filesystem::path& file, std::string& error);

// Null: the module has no such export.
void* Find(Handle module, const char* name);

// The file that a loaded module came from, with its whole path.
std::filesystem::path FileOf(Handle module, const std::filesystem::path& loadedAs);

// The version in the file's own description, empty where it has none.
std::string VersionOf(const std::filesystem::path& file);

std::filesystem::path OwnFolder();

}  // namespace orv::module
