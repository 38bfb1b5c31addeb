#include <dlfcn.h>

#include "orv/library/module.h"

namespace orv::module {

const char* const LibraryName = "libquelvixwinlib.so";

Handle Load(const std::filesystem::path& file, std::string& error) {
    const Handle module = dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!module) {
        error = dlerror();
    }
    return module;
}

void* Find(Handle module, const char* name) {
    return dlsym(module, name);
}

std::filesystem::path FileOf(Handle, const std::filesystem::path& loadedAs) {
    return std::filesystem::canonical(loadedAs);
}

// Returns the version at the end of a file name such as libquelvixwinlib.so.1.0.0.
std::string VersionOf(Handle, const std::filesystem::path& file) {
    const std::string name = file.filename().string();
    const std::size_t end = name.find(".so.");
    return end == std::string::npos ? "" : name.substr(end + 4);
}

std::filesystem::path OwnFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

}  // namespace orv::module
