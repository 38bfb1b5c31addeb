// Implements platform/runtime.h for benchmarks: the activation factories of the runtime's classes
// return objects that do as little work as possible.
#include "platform/runtime.h"

#include <chrono>
#include <new>
#include <string>
#include <string_view>
#include <thread>

#include "bench/runtime/advertisement.h"
#include "runtimes/objects/stubs/radios.h"
#include "runtimes/objects/system_time.h"

namespace orv {

namespace bench {

thread_local UINT32 answerDelayMs = 0;

void* AllocateObject(std::size_t size) {
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void FreeObject(void* memory) {
    std::free(memory);
}

namespace {

class Adapter final : public Bare<Stub<IBluetoothAdapter>> {};

class BluetoothRadio final : public Bare<Stub<IRadio>> {
  public:
    HRESULT get_Kind(RadioKind* value) override {
        *value = RadioKind::Bluetooth;
        return S_OK;
    }
    HRESULT get_State(RadioState* value) override {
        *value = RadioState::On;
        return S_OK;
    }
};

class AdapterFactory final : public Bare<Stub<IBluetoothAdapterStatics>> {
  public:
    HRESULT GetDefaultAsync(IAsyncOperation<BluetoothAdapter>** operation) override {
        return Hand(operation, new EndedOperation<BluetoothAdapter>(&adapter));
    }

  private:
    Adapter adapter;
};

class RadioFactory final : public Bare<Stub<IRadioStatics>> {
  public:
    HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation) override {
        return Hand(operation, new EndedOperation<IVectorView<Radio>>(&radios));
    }

  private:
    BluetoothRadio radio;
    OneItem<Radio> radios{&radio};
};

class DeviceFactory final : public Bare<Stub<IBluetoothLEDeviceStatics>> {
  public:
    HRESULT FromBluetoothAddressAsync(UINT64 address,
                                      IAsyncOperation<BluetoothLEDevice>** operation) override {
        return Hand(operation, new EndedOperation<BluetoothLEDevice>(&DeviceOf(address)));
    }
};

class ReaderFactory final : public Bare<Stub<IDataReaderStatics>> {
  public:
    HRESULT FromBuffer(IBuffer* buffer, IDataReader** reader) override {
        return Hand(reader, new Reader(buffer));
    }
};

template <typename Product>
class ProductFactory final : public Bare<IActivationFactory> {
  public:
    HRESULT ActivateInstance(IInspectable** instance) override {
        return Hand(instance, new Product);
    }
};

struct Event {
    bool set = false;
};

template <typename Factory>
IUnknown* TheOne() {
    static Factory& factory = *new Factory;
    return &factory;
}

IUnknown* FactoryOfName(std::u16string_view name) {
    const struct {
        std::u16string_view name;
        IUnknown* (*factory)();
    } table[] = {
        {BluetoothAdapter::Name, TheOne<AdapterFactory>},
        {Radio::Name, TheOne<RadioFactory>},
        {BluetoothLEDevice::Name, TheOne<DeviceFactory>},
        {DataReader::Name, TheOne<ReaderFactory>},
        {DataWriter::Name, TheOne<ProductFactory<Writer>>},
        {BluetoothLEAdvertisementWatcher::Name, TheOne<ProductFactory<Watcher>>},
    };
    for (const auto& entry : table) {
        if (entry.name == name) {
            return entry.factory();
        }
    }
    return nullptr;
}

}  // namespace

HRESULT Advertisement::get_LocalName(HSTRING* value) {
    return WindowsCreateString(name, static_cast<UINT32>(std::char_traits<char16_t>::length(name)),
                               value);
}

}  // namespace bench

namespace runtime {

HRESULT GetActivationFactory(const char16_t* className, const GUID& iid, void** factory) {
    IUnknown* const found = bench::FactoryOfName(className);
    return found ? found->QueryInterface(&iid, factory) : REGDB_E_CLASSNOTREG;
}

HRESULT JoinMultithreadedApartment() {
    return S_OK;
}

HRESULT GetLibraryFactory(const char16_t*, const char16_t*, const GUID&, void**) {
    return REGDB_E_CLASSNOTREG;
}

HRESULT CreateFreeThreadedMarshaler(IUnknown*, IUnknown**) {
    return E_NOTIMPL;
}

HRESULT CreateKernelEvent(EventHandle* event) {
    *event = std::calloc(1, sizeof(bench::Event));
    return *event ? S_OK : E_OUTOFMEMORY;
}

void SetKernelEvent(EventHandle event) {
    static_cast<bench::Event*>(event)->set = true;
}

// Only sleeps for the device's delay, because the operation is already complete.
void WaitForKernelEvent(EventHandle, UINT32) {
    if (bench::answerDelayMs != 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(bench::answerDelayMs));
    }
}

void CloseKernelEvent(EventHandle event) {
    std::free(event);
}

INT64 SystemTimeMs() noexcept {
    return objects::UnixTimeMs();
}

}  // namespace runtime
}  // namespace orv
