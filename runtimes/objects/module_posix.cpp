#include <dlfcn.h>
#include <link.h>

#include "runtimes/objects/module.h"

namespace orv::objects {

void KeepModuleLoaded() {
    Dl_info info;
    link_map* module = nullptr;
    const void* const own = reinterpret_cast<const void*>(&KeepModuleLoaded);
    // Uses the loader's name of the module, because the loader finds a loaded module by that name
    // even if the current directory has changed. The main program's name is empty, but it stays
    // loaded.
    if (dladdr1(own, &info, reinterpret_cast<void**>(&module), RTLD_DL_LINKMAP) != 0 &&
        *module->l_name != '\0') {
        static_cast<void>(dlopen(module->l_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE));
    }
}

}  // namespace orv::objects
