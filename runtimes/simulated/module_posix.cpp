// The file that this code was loaded from.
#include <dlfcn.h>

#include "runtimes/simulated/module.h"

namespace orv::simulated {

void KeepModuleLoaded() {
    Dl_info info;
    if (dladdr(reinterpret_cast<const void*>(&KeepModuleLoaded), &info) != 0) {
        // Answers null for the program itself, which stays anyway.
        static_cast<void>(dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE));
    }
}

}  // namespace orv::simulated
