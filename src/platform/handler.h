// Handlers: objects of the library whose functions the runtime calls.
#pragma once

#include <atomic>
#include <memory>

#include "platform/abi/foundation.h"
#include "platform/reference.h"

namespace orv {

// The part of a handler that does not depend on its event's types.
//
// The constructor keeps the library loaded until the process ends, because the runtime may call or
// release the handler at any later time, on any thread. Throws if that fails.
class HandlerState {
  public:
    HandlerState();
    ~HandlerState();
    HandlerState(const HandlerState&) = delete;
    HandlerState& operator=(const HandlerState&) = delete;

    ULONG AddReference() { return references.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG DropReference() { return references.fetch_sub(1, std::memory_order_acq_rel) - 1; }

    // Returns one of the handler's interfaces: IUnknown, `ownIid`, IAgileObject or IMarshal. The
    // last two declare that the runtime may call the handler directly on any of its threads.
    HRESULT Query(IUnknown* handler, const GUID& ownIid, const GUID* iid, void** object);

  private:
    HRESULT QueryMarshaler(IUnknown* handler, void** object);

    std::atomic<ULONG> references{1};
    // The aggregated free-threaded marshaler, created at the first request. It lives as long as the
    // handler, because a reference to its IMarshal counts as a reference to the handler.
    std::atomic<IUnknown*> marshaler{nullptr};
};

// Base of a handler class. A new handler has one reference, which its creator owns.
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

// Calls `callback` for each event. The callback is noexcept, so that no exception reaches the
// runtime.
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
