// The handlers of one event, in the order of their registration.
#pragma once

#include <vector>

#include "runtimes/objects/handler.h"

namespace orv::objects {

// Has no lock: its owner copies the handlers under a lock, releases the lock, and invokes them.
template <typename Interface>
class Event {
  public:
    using Handlers = std::vector<SharedHandler<Interface>>;

    EventRegistrationToken Add(SharedHandler<Interface> handler) {
        registered.push_back(std::move(handler));
        return EventRegistrationToken{static_cast<INT64>(registered.size())};
    }
    const Handlers& All() const { return registered; }
    // Removes and returns all handlers, so that the caller can release them without a lock.
    Handlers TakeAll() { return std::move(registered); }

  private:
    Handlers registered;
};

// Implements functions such as add_Received. `add` stores the handler under the owner's lock and
// returns its token.
template <typename Interface, typename Add>
HRESULT AddHandler(Interface* handler, EventRegistrationToken* token, Add&& add) {
    if (handler == nullptr || token == nullptr) {
        return E_POINTER;
    }
    *token = add(TakeHandler(handler));
    return S_OK;
}

}  // namespace orv::objects
