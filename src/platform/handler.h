// Handlers: the objects that the library gives to the runtime to be called back.
#pragma once

#include <atomic>
#include <memory>

#include "platform/abi/foundation.h"
#include "platform/reference.h"

namespace orv {

// What all handlers have in common, apart from the types that the runtime sees.
//
// Creating a handler keeps the library loaded for the rest of the process, because the runtime may
// call or release it at any later time, on any thread. Raises when that cannot be had.
class HandlerState {
  public:
    HandlerState();
    ~HandlerState();
    HandlerState(const HandlerState&) = delete;
    HandlerState& operator=(const HandlerState&) = delete;

    ULONG AddReference() { return references.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG DropReference() { return references.fetch_sub(1, std::memory_order_acq_rel) - 1; }

    // Answers for IUnknown, the handler's own interface, IAgileObject and IMarshal. The last two
    // say that the runtime may call the handler directly on any of its threads.
    HRESULT Query(IUnknown* handler, const GUID& ownIid, const GUID* iid, void** object);

  private:
    HRESULT QueryMarshaler(IUnknown* handler, void** object);

    std::atomic<ULONG> references{1};
    // The handler's free-threaded marshaler, aggregated, from the first request for one on. It
    // stays as long as the handler, since its IMarshal counts its references on the handler.
    std::atomic<IUnknown*> marshaler{nullptr};
};

// Base of a handler class. It is born with one reference, its creator's.
template <typename Interface, typename Derived>
class Handler : public Interface {
  public:
    HRESULT QueryInterface(const GUID* iid, void** object) final {
        return state.Query(this, IidOf<Interface>, iid, object);
    }
    ULONG AddRef() final { return state.AddReference(); }
    ULONG Release() final {
        const ULONG left = state.DropReference();
        if (left == 0) {
            delete static_cast<Derived*>(this);
        }
        return left;
    }

  private:
    HandlerState state;
};

// Passes an event on to a function. Being noexcept, that lets no failure out to the runtime.
template <typename Sender, typename Arguments>
class EventHandler final
    : public Handler<TypedEventHandler<Sender, Arguments>, EventHandler<Sender, Arguments>> {
  public:
    using SenderReference = Reference<std::remove_pointer_t<Abi<Sender>>>;
    using ArgumentsReference = Reference<std::remove_pointer_t<Abi<Arguments>>>;
    using Callback = void (*)(const SenderReference&, const ArgumentsReference&) noexcept;

    static Reference<TypedEventHandler<Sender, Arguments>> Create(Callback callback) {
        return Reference<TypedEventHandler<Sender, Arguments>>::Adopt(new EventHandler(callback));
    }

    HRESULT Invoke(Abi<Sender> sender, Abi<Arguments> arguments) final {
        callback(SenderReference(sender), ArgumentsReference(arguments));
        return S_OK;
    }

  private:
    explicit EventHandler(Callback passedOn) : callback(passedOn) {}

    const Callback callback;
};

}  // namespace orv
