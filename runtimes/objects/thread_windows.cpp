#include <windows.h>

#include "runtimes/objects/thread.h"

namespace orv::objects {

std::thread StartThread(std::function<void()> run) {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(reinterpret_cast<const void*>(&StartThread)),
                       &module);
    return std::thread(std::move(run));
}

}  // namespace orv::objects
