#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "platform/failure.h"
#include "platform/system.h"

namespace orv::system {

namespace {

// Returns an address inside this library's code.
const void* OwnAddress() {
    return reinterpret_cast<const void*>(&ReadModulePath);
}

// Removes the text that Linux appends to the path of a replaced or deleted file.
void CutMarkOfDeleted(char* path) {
    constexpr std::string_view Mark = " (deleted)";
    const std::size_t length = strlen(path);
    if (length > Mark.size() && path + length - Mark.size() == Mark && access(path, F_OK) != 0) {
        path[length - Mark.size()] = '\0';
    }
}

// Returns the file path in a line of the memory map, or null if the line does not map `address`.
// Modifies the line, which is "first-last rights offset device inode path\n".
const char* MappedFile(char* line, std::uintptr_t address) {
    unsigned long first = 0;
    unsigned long last = 0;
    int pathAt = 0;
    const int read = sscanf(line, "%lx-%lx %*s %*s %*s %*s %n", &first, &last, &pathAt);
    if (read != 2 || address < first || address >= last || line[pathAt] != '/') {
        return nullptr;
    }
    line[strcspn(line, "\n")] = '\0';
    CutMarkOfDeleted(line + pathAt);
    return line + pathAt;
}

bool OpenThen(const char* path, int mode, std::string_view bytes) {
    // O_NOFOLLOW: a planted symbolic link must not redirect the log into another file.
    const int file = open(path, O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | mode, 0666);
    if (file < 0) {
        return false;
    }
    while (!bytes.empty()) {
        const ssize_t written = write(file, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            break;
        }
    }
    close(file);
    return true;
}

pthread_mutex_t* MutexIn(LockState& lock) {
    // In glibc, a mutex of zeros is initialized and unlocked, like a LockState of zeros.
    static_assert(sizeof(pthread_mutex_t) <= sizeof(LockState));
    return reinterpret_cast<pthread_mutex_t*>(lock.words);
}

}  // namespace

// Reads the memory map, because the dynamic loader may return a relative path, and the current
// directory may have changed.
bool ReadModulePath(char (&path)[LongestPath]) {
    FILE* map = fopen("/proc/self/maps", "re");
    if (!map) {
        return false;
    }
    bool found = false;
    char line[LongestPath + 128];
    while (!found && fgets(line, sizeof line, map)) {
        const char* file = MappedFile(line, reinterpret_cast<std::uintptr_t>(OwnAddress()));
        if (file && strlen(file) < LongestPath) {
            strcpy(path, file);
            found = true;
        }
    }
    fclose(map);
    if (found) {
        KeepModuleLoaded();
    }
    return found;
}

void KeepModuleLoaded() {
    Dl_info info;
    link_map* module = nullptr;
    void** extra = reinterpret_cast<void**>(&module);
    // The main program has an empty name; dlopen expects null for it.
    if (!dladdr1(OwnAddress(), &info, extra, RTLD_DL_LINKMAP) ||
        !dlopen(*module->l_name ? module->l_name : nullptr,
                RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE)) {
        RaiseFailure(E_FAIL);
    }
}

void AcquireLock(LockState& lock) noexcept {
    pthread_mutex_lock(MutexIn(lock));
}

void ReleaseLock(LockState& lock) noexcept {
    pthread_mutex_unlock(MutexIn(lock));
}

std::tm ToLocalTime(std::time_t seconds) {
    std::tm local{};
    localtime_r(&seconds, &local);
    return local;
}

std::uint64_t RandomBits() {
    std::uint64_t bits = 0;
    if (getentropy(&bits, sizeof bits) != 0) {
        RaiseFailure(E_FAIL);
    }
    return bits;
}

bool EmptyFile(const char* path) {
    return OpenThen(path, O_TRUNC, {});
}

bool AppendToFile(const char* path, std::string_view bytes) {
    return OpenThen(path, O_APPEND, bytes);
}

}  // namespace orv::system
