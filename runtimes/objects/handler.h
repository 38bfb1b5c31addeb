#pragma once

#include <memory>

#include "runtimes/objects/observer.h"

namespace orv::objects {

// Returns whether the handler has the interfaces `ownIid`, IAgileObject and IMarshal. The last two
// let the runtime call the handler from any thread.
bool IsProperHandler(IUnknown* handler, const GUID& ownIid) noexcept;

// Owns one reference to a client's handler, and is counted in Ledger::handlers.
template <typename Interface>
class HandlerReference {
  public:
    explicit HandlerReference(Interface* handler)
        : foreign(handler), ledger(TheObserver().CurrentLedger()) {
        foreign->AddRef();
        ledger->handlers.fetch_add(1, std::memory_order_relaxed);
    }
    HandlerReference(const HandlerReference&) = delete;
    HandlerReference& operator=(const HandlerReference&) = delete;
    ~HandlerReference() {
        foreign->Release();
        ledger->handlers.fetch_sub(1, std::memory_order_release);
    }

    Interface* operator->() const { return foreign; }

  private:
    Interface* const foreign;
    Ledger* const ledger;
};

template <typename Interface>
using SharedHandler = std::shared_ptr<HandlerReference<Interface>>;

// Checks a handler and returns a reference to it. `handler` must not be null. Hold no lock of the
// runtime, because this function calls the handler.
template <typename Interface>
SharedHandler<Interface> TakeHandler(Interface* handler) {
    if (!IsProperHandler(handler, IidOf<Interface>)) {
        TheObserver().ImproperHandler();
    }
    return std::make_shared<HandlerReference<Interface>>(handler);
}

}  // namespace orv::objects
