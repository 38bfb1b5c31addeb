#pragma once

#include <string_view>

namespace orv::system {

// Both functions open the log file for shared writing and create it if needed. They return false if
// the file cannot be opened or, on Linux, is a symbolic link. They do not report write errors.
bool EmptyFile(const char* path);
bool AppendToFile(const char* path, std::string_view bytes);

}  // namespace orv::system
