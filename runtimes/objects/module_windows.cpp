#include <windows.h>

#include "runtimes/objects/module.h"

namespace orv::objects {

void KeepModuleLoaded() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(reinterpret_cast<const void*>(&KeepModuleLoaded)),
                       &module);
}

}  // namespace orv::objects
