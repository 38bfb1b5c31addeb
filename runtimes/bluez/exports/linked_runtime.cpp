// Implements runtime.h for the library that is linked with this runtime.
#include <new>

#include "platform/runtime.h"
#include "runtimes/bluez/world/device.h"
#include "runtimes/bluez/world/kernel_event.h"
#include "runtimes/bluez/world/radio.h"
#include "runtimes/bluez/world/watcher.h"
#include "runtimes/objects/factories.h"
#include "runtimes/objects/marshaler.h"
#include "runtimes/objects/system_time.h"

namespace orv {

namespace bluez {

namespace {

// Ignores calls and references. Only simulated runtimes count them.
class NoObserver final : public objects::CallObserver {
  public:
    NoObserver() : CallObserver(/*hears=*/false) {}

    HRESULT Called(objects::Member&, const objects::Argument&) override { return S_OK; }
    HRESULT UnexpectedlyCalled(const char*, const char*) override { return E_NOTIMPL; }
    void ImproperHandler() override {}
    objects::Ledger* CurrentLedger() override { return &ledger; }

  private:
    objects::Ledger ledger;
};

objects::Factories& TheFactories() {
    static auto* const none = new NoObserver;
    static auto* const factories = [] {
        objects::observer.store(none, std::memory_order_release);
        return new objects::Factories({&GetDefaultAdapterAsync, &GetRadiosAsync,
                                       &BluezBluetoothLEDevice::FromBluetoothAddressAsync,
                                       &BluezBluetoothLEAdvertisementWatcher::Activate});
    }();
    return *factories;
}

}  // namespace

}  // namespace bluez

namespace runtime {

using bluez::KernelEvent;

HRESULT GetActivationFactory(const char16_t* className, const GUID& iid, void** factory) {
    try {
        return bluez::TheFactories().Find(className, iid, factory);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

// Linux has no COM apartments and no DLLs with activation factories, so these do nothing.
HRESULT JoinMultithreadedApartment() {
    return S_OK;
}

HRESULT GetLibraryFactory(const char16_t*, const char16_t*, const GUID&, void**) {
    return REGDB_E_CLASSNOTREG;
}

HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner) {
    return objects::CreateFreeThreadedMarshaler(outer, inner);
}

HRESULT CreateKernelEvent(EventHandle* event) {
    *event = new (std::nothrow) KernelEvent;
    return *event == nullptr ? E_OUTOFMEMORY : S_OK;
}

void SetKernelEvent(EventHandle event) {
    static_cast<KernelEvent*>(event)->Set();
}

void WaitForKernelEvent(EventHandle event, UINT32 limitMs) {
    static_cast<KernelEvent*>(event)->Wait(std::chrono::milliseconds(limitMs));
}

void CloseKernelEvent(EventHandle event) {
    delete static_cast<KernelEvent*>(event);
}

INT64 SystemTimeMs() noexcept {
    return objects::UnixTimeMs();
}

}  // namespace runtime
}  // namespace orv
