#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace orv::module {

extern const char* const LibraryName;

using Handle = void*;

// Returns null, and the system's reason in `error`, if loading fails. A loaded library is never
// unloaded.
Handle Load(const std::filesystem::path& file, std::string& error);

// Returns null if there is no such export.
void* Find(Handle module, const char* name);

std::filesystem::path FileOf(Handle module, const std::filesystem::path& loadedAs);

// Returns the version of a module, or an empty text if its file has none.
std::string VersionOf(Handle module, const std::filesystem::path& file);

std::filesystem::path OwnFolder();

}  // namespace orv::module
