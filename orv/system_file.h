#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>

namespace orv {

bool IsLink(const std::filesystem::path& path);

// Returns whether the path names a device, as NUL does in every directory of Windows.
bool IsReservedName(const std::filesystem::path& path);

// Returns null, with the reason in errno, if the file exists or cannot be created.
std::FILE* CreateNewFile(const std::filesystem::path& path);

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using OpenFile = std::unique_ptr<std::FILE, FileCloser>;

// Opens a file or a pipe for reading, without waiting for a writer of the pipe. Returns null, with
// the reason in errno, if it cannot be opened.
OpenFile OpenForReading(const std::filesystem::path& path);

}  // namespace orv
