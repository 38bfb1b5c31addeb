#pragma once

#include <cstddef>

namespace orv::system {

// Maximum size of a path in bytes, with its terminating zero.
constexpr std::size_t LongestPath = 4096;

// Writes the full path of the library's file. Returns false if the path is unknown or, on Windows,
// if the ANSI code page cannot express it. A successful call keeps the library loaded. On Windows,
// each call adds a module reference that is never released, and cuts the path to 259 bytes.
bool ReadModulePath(char (&path)[LongestPath]);

// Keeps the library loaded until the process ends. Throws when the system refuses.
void KeepModuleLoaded();

}  // namespace orv::system
