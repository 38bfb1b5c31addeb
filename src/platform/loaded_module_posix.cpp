#include <dlfcn.h>
#include <link.h>
#include <stdio.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/failure.h"
#include "platform/loaded_module.h"

namespace orv::system {

namespace {

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

}  // namespace orv::system
