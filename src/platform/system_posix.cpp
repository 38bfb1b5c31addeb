// The operating system's part on Linux.
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <link.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "platform/failure.h"
#include "platform/system.h"

namespace orv::system {

namespace {

// Any address inside this library's own code.
const void* OwnAddress() {
    return reinterpret_cast<const void*>(&ReadModulePath);
}

// A file that was replaced or deleted since it was mapped is marked so behind its path.
void CutMarkOfDeleted(char* path) {
    constexpr std::string_view Mark = " (deleted)";
    const std::size_t length = strlen(path);
    if (length > Mark.size() && path + length - Mark.size() == Mark && access(path, F_OK) != 0) {
        path[length - Mark.size()] = '\0';
    }
}

// The file that one line of the memory map names, or null when it does not map `address`. The line
// is "first-last rights offset device inode   path\n", and is changed.
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
    const int file = open(path, O_WRONLY | O_CREAT | O_CLOEXEC | mode, 0666);
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

}  // namespace

// The dynamic loader knows the path only as it was given, which may be relative to a folder that
// has changed since; the memory map has it whole.
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
    // The program itself has an empty name, and dlopen knows it by null.
    if (!dladdr1(OwnAddress(), &info, extra, RTLD_DL_LINKMAP) ||
        !dlopen(*module->l_name ? module->l_name : nullptr,
                RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE)) {
        RaiseFailure(E_FAIL);
    }
}

std::tm ToLocalTime(std::time_t seconds) {
    std::tm local{};
    localtime_r(&seconds, &local);
    return local;
}

bool EmptyFile(const char* path) {
    return OpenThen(path, O_TRUNC, {});
}

bool AppendToFile(const char* path, std::string_view bytes) {
    return OpenThen(path, O_APPEND, bytes);
}

}  // namespace orv::system
