// The file that this code was loaded from.
#include <windows.h>

#include "runtimes/simulated/module.h"

namespace orv::simulated {

void KeepModuleLoaded() {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(reinterpret_cast<const void*>(&KeepModuleLoaded)),
                       &module);
}

}  // namespace orv::simulated
