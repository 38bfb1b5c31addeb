#include "runtimes/objects/observer.h"

namespace orv::objects {

std::atomic<CallObserver*> observer{nullptr};

HRESULT Unexpected(const char* owner, const char* name) noexcept {
    try {
        return TheObserver().UnexpectedlyCalled(owner, name);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace orv::objects
