#include <dlfcn.h>

#include "orv/library/module.h"

namespace orv::module {

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

std::string VersionOf(const std::filesystem::path&) {
    return {};
}

std::filesystem::path OwnFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

}  // namespace orv::module
