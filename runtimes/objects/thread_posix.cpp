#include <dlfcn.h>
#include <link.h>
#include <signal.h>

#include "runtimes/objects/thread.h"

namespace orv::objects {

namespace {

void KeepModuleLoaded() {
    Dl_info info;
    link_map* module = nullptr;
    const void* const own = reinterpret_cast<const void*>(&StartThread);
    // Uses the loader's own name of the module, which stays valid if the current directory changes.
    // The main program has an empty name and always stays loaded.
    if (dladdr1(own, &info, reinterpret_cast<void**>(&module), RTLD_DL_LINKMAP) != 0 &&
        *module->l_name != '\0') {
        static_cast<void>(dlopen(module->l_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE));
    }
}

// Blocks signals on the calling thread, and on each thread that this thread creates meanwhile.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int ownFault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) {
            sigdelset(&blocked, ownFault);
        }
        pthread_sigmask(SIG_SETMASK, &blocked, &before);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before;
};

}  // namespace

std::thread StartThread(std::function<void()> run) {
    KeepModuleLoaded();
    const SignalsBlocked blocked;
    return std::thread(std::move(run));
}

}  // namespace orv::objects
