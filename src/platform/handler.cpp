#include "platform/handler.h"

#include "platform/loaded_module.h"
#include "platform/runtime.h"

namespace orv {

HandlerState::HandlerState() {
    // Each new handler calls KeepModuleLoaded until a call has succeeded. Concurrent calls are
    // harmless.
    static std::atomic<bool> kept{false};
    if (!kept.load(std::memory_order_acquire)) {
        system::KeepModuleLoaded();
        kept.store(true, std::memory_order_release);
    }
}

HandlerState::~HandlerState() {
    if (IUnknown* inner = marshaler.load(std::memory_order_acquire)) {
        inner->Release();
    }
}

HRESULT HandlerState::Query(IUnknown* handler, const GUID& ownIid, const GUID* iid, void** object) {
    if (!object) {
        return E_POINTER;
    }
    *object = nullptr;
    if (!iid) {
        return E_POINTER;
    }
    if (*iid == IidOf<IMarshal>) {
        return QueryMarshaler(handler, object);
    }
    if (*iid != IidOf<IUnknown> && *iid != IidOf<IAgileObject> && *iid != ownIid) {
        return E_NOINTERFACE;
    }
    handler->AddRef();
    *object = handler;
    return S_OK;
}

HRESULT HandlerState::QueryMarshaler(IUnknown* handler, void** object) {
    IUnknown* inner = marshaler.load(std::memory_order_acquire);
    if (!inner) {
        IUnknown* created = nullptr;
        const HRESULT code = runtime::CreateFreeThreadedMarshaler(handler, &created);
        if (Failed(code)) {
            return code;
        }
        if (marshaler.compare_exchange_strong(inner, created, std::memory_order_acq_rel)) {
            inner = created;
        } else {
            created->Release();
        }
    }
    return inner->QueryInterface(&IidOf<IMarshal>, object);
}

}  // namespace orv
