#include <dlfcn.h>
#include <link.h>

#include "runtimes/objects/module.h"

namespace orv::objects {

void KeepModuleLoaded() {
    Dl_info info;
    link_map* module = nullptr;
    const void* const own = reinterpret_cast<const void*>(&KeepModuleLoaded);
    // Uses the loader's own name of the module, which stays valid if the current directory changes.
    // The main program has an empty name and always stays loaded.
    if (dladdr1(own, &info, reinterpret_cast<void**>(&module), RTLD_DL_LINKMAP) != 0 &&
        *module->l_name != '\0') {
        static_cast<void>(dlopen(module->l_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE));
    }
}

}  // namespace orv::objects
