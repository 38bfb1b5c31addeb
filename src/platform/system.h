// The functions of the operating system that the library needs besides the Windows Runtime. Each
// operating system has a file system_*.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string_view>

namespace orv::system {

// Size of a path in bytes, including its terminating zero.
constexpr std::size_t LongestPath = 4096;

// Writes the full path of the library's file. Returns false if the path is unknown or, on Windows,
// if the ANSI code page cannot express it. A successful call keeps the library loaded. On Windows,
// each call adds a module reference that is never released, and cuts the path to 259 bytes.
bool ReadModulePath(char (&path)[LongestPath]);

// Keeps the library loaded until the process ends. Throws when the system refuses.
void KeepModuleLoaded();

// Storage for a lock of the operating system. All zeros means unlocked.
struct LockState {
    void* words[5] = {};
};

// Locking needs no memory and cannot fail. A thread must not acquire a lock that it already holds.
void AcquireLock(LockState& lock) noexcept;
void ReleaseLock(LockState& lock) noexcept;

// Converts with the process's time zone and daylight-saving rules.
std::tm ToLocalTime(std::time_t seconds);

// Returns bits that an attacker cannot predict. Throws when the system cannot provide any.
std::uint64_t RandomBits();

// Both functions open the file for shared writing and create it if needed. They return false if the
// file cannot be opened or, on Linux, is a symbolic link. They do not report write errors.
bool EmptyFile(const char* path);
bool AppendToFile(const char* path, std::string_view bytes);

}  // namespace orv::system
