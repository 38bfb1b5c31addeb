// What the library asks of the operating system beside the Windows Runtime: its own file, staying
// loaded, local time, and files. One system_*.cpp per operating system.
#pragma once

#include <cstddef>
#include <ctime>
#include <string_view>

namespace orv::system {

// Bytes of a path, its terminating zero included.
constexpr std::size_t LongestPath = 4096;

// Writes the full path of the file that this library's code was loaded from; false when it cannot
// be found. A success keeps the library loaded; on Windows it adds a reference to the module that
// is never given back, and the path is in the ANSI code page, cut to 259 bytes.
bool ReadModulePath(char (&path)[LongestPath]);

// From the first success on, the library is not unloaded before the process ends. Raises when that
// cannot be had.
void KeepModuleLoaded();

// By the process's time zone and daylight-saving rules.
std::tm ToLocalTime(std::time_t seconds);

// Both open the file for writing, shared with everyone, and create it if needed; false when it
// cannot be opened. Whether the bytes could be written is not told.
bool EmptyFile(const char* path);
bool AppendToFile(const char* path, std::string_view bytes);

}  // namespace orv::system
