// The file that the library under test was loaded from, asked of the dynamic linker.
#include <dlfcn.h>

#include <cstdlib>

#include "log_file.h"

namespace orv {

std::string LibraryFile() {
    // Looked up by name: the address that the program itself sees may be a stub of its own.
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
