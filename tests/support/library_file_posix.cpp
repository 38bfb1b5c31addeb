#include <dlfcn.h>

#include <cstdlib>

#include "log_file.h"

namespace orv {

std::string LibraryFile() {
    // Looks the function up by name, because the program's pointer to it may be a stub.
    Dl_info info = {};
    if (dladdr(dlsym(RTLD_DEFAULT, "Logging_Enable"), &info) == 0) {
        return {};
    }
    char* resolved = realpath(info.dli_fname, nullptr);
    const std::string file = resolved != nullptr ? resolved : "";
    std::free(resolved);
    return file;
}

}  // namespace orv
