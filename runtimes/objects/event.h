// The handlers of one event, in the order of their registration.
#pragma once

#include <vector>

#include "runtimes/objects/handler.h"

namespace orv::objects {

// Has no lock: the owner guards it, and copies the handlers out before it invokes them.
template <typename Interface>
class Event {
  public:
    using Handlers = std::vector<SharedHandler<Interface>>;

    EventRegistrationToken Add(SharedHandler<Interface> handler) {
        registered.push_back(std::move(handler));
        return EventRegistrationToken{static_cast<INT64>(registered.size())};
    }
    const Handlers& All() const { return registered; }
    // The handlers, to be released where no lock is held.
    Handlers TakeAll() { return std::move(registered); }

  private:
    Handlers registered;
};

}  // namespace orv::objects
