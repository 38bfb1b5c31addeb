// Handlers that came from outside: the reference to them, and whether they are what they must be.
#pragma once

#include <memory>

#include "runtimes/objects/observer.h"

namespace orv::objects {

// A handler may be called from any of the runtime's threads only when it says so, and it is asked
// for its own interface and for a marshaler when it has to cross apartments.
bool IsProperHandler(IUnknown* handler, const GUID& ownIid) noexcept;

// One counted reference to a foreign handler. It is shared by everything that may still invoke it.
template <typename Interface>
class Handler {
  public:
    explicit Handler(Interface* handler) : foreign(handler), ledger(TheObserver().CurrentLedger()) {
        foreign->AddRef();
        ledger->handlers.fetch_add(1, std::memory_order_relaxed);
    }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;
    ~Handler() {
        foreign->Release();
        ledger->handlers.fetch_sub(1, std::memory_order_release);
    }

    Interface* operator->() const { return foreign; }

  private:
    Interface* const foreign;
    Ledger* const ledger;
};

template <typename Interface>
using SharedHandler = std::shared_ptr<Handler<Interface>>;

// Takes a handler in; null is the caller's to refuse first. Calls the handler, so no lock of the
// runtime may be held.
template <typename Interface>
SharedHandler<Interface> TakeHandler(Interface* handler) {
    if (!IsProperHandler(handler, IidOf<Interface>)) {
        TheObserver().ImproperHandler();
    }
    return std::make_shared<Handler<Interface>>(handler);
}

}  // namespace orv::objects
