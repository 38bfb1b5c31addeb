#include "runtimes/objects/factories.h"

#include "runtimes/objects/object.h"
#include "runtimes/objects/streams.h"
#include "runtimes/objects/stubs/bluetooth.h"
#include "runtimes/objects/stubs/radios.h"

namespace orv::objects {

namespace {

Class adapterFactory("BluetoothAdapter");
Member getDefaultAsyncMember(adapterFactory.name, "GetDefaultAsync");
Class radioFactory("Radio");
Member getRadiosAsyncMember(radioFactory.name, "GetRadiosAsync");
Class watcherFactory("BluetoothLEAdvertisementWatcher");
Member watcherActivateInstanceMember(watcherFactory.name, "ActivateInstance");
Class deviceFactory("BluetoothLEDevice");
Member fromBluetoothAddressAsyncMember(deviceFactory.name, "FromBluetoothAddressAsync");
Class readerFactory("DataReader");
Member fromBufferMember(readerFactory.name, "FromBuffer");
Class writerFactory("DataWriter");
Member writerActivateInstanceMember(writerFactory.name, "ActivateInstance");

class FactoryBase {
  public:
    virtual HRESULT Get(const GUID& iid, void** factory) = 0;

  protected:
    ~FactoryBase() = default;
};

template <typename... Interfaces>
class Factory : public Object<Interfaces..., IActivationFactory>, public FactoryBase {
  public:
    Factory(const Activations& ofRuntime, Class& runtimeClass)
        : Object<Interfaces..., IActivationFactory>(runtimeClass, nullptr),
          activations(ofRuntime),
          className(runtimeClass.name) {
        this->AddInternal();
    }

    HRESULT Get(const GUID& iid, void** factory) override {
        *factory = this->Find(iid);
        if (*factory == nullptr) {
            return E_NOINTERFACE;
        }
        this->AddRef();
        return S_OK;
    }

    HRESULT ActivateInstance(IInspectable**) override {
        return Unexpected(className, "ActivateInstance");
    }

  protected:
    const Activations& activations;

  private:
    bool IsAgile() const override { return activations.areFactoriesAgile(); }

    const char* const className;
};

class AdapterFactory final : public Factory<Stub<IBluetoothAdapterStatics>> {
  public:
    explicit AdapterFactory(const Activations& ofRuntime) : Factory(ofRuntime, adapterFactory) {}

    HRESULT GetDefaultAsync(IAsyncOperation<BluetoothAdapter>** operation) override {
        return Call(getDefaultAsyncMember,
                    [&] { return activations.getDefaultAdapterAsync(operation); });
    }
};

class RadioFactory final : public Factory<Stub<IRadioStatics>> {
  public:
    explicit RadioFactory(const Activations& ofRuntime) : Factory(ofRuntime, radioFactory) {}

    HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation) override {
        return Call(getRadiosAsyncMember, [&] { return activations.getRadiosAsync(operation); });
    }
};

class DeviceFactory final : public Factory<Stub<IBluetoothLEDeviceStatics>> {
  public:
    explicit DeviceFactory(const Activations& ofRuntime) : Factory(ofRuntime, deviceFactory) {}

    HRESULT FromBluetoothAddressAsync(UINT64 address,
                                      IAsyncOperation<BluetoothLEDevice>** operation) override {
        return Call(fromBluetoothAddressAsyncMember, Argument::Number(address),
                    [&] { return activations.fromBluetoothAddressAsync(address, operation); });
    }
};

class ReaderFactory final : public Factory<Stub<IDataReaderStatics>> {
  public:
    explicit ReaderFactory(const Activations& ofRuntime) : Factory(ofRuntime, readerFactory) {}

    HRESULT FromBuffer(IBuffer* buffer, IDataReader** reader) override {
        return Call(fromBufferMember, [&] { return ReadFromBuffer(buffer, reader); });
    }
};

class WatcherFactory final : public Factory<> {
  public:
    explicit WatcherFactory(const Activations& ofRuntime) : Factory(ofRuntime, watcherFactory) {}

    HRESULT ActivateInstance(IInspectable** instance) override {
        return Call(watcherActivateInstanceMember,
                    [&] { return activations.activateWatcher(instance); });
    }
};

class WriterFactory final : public Factory<> {
  public:
    explicit WriterFactory(const Activations& ofRuntime) : Factory(ofRuntime, writerFactory) {}

    HRESULT ActivateInstance(IInspectable** instance) override {
        return Call(writerActivateInstanceMember,
                    [&] { return Give(instance, Make<MemoryWriter>()); });
    }
};

}  // namespace

struct Factories::All {
    explicit All(const Activations& ofRuntime)
        : activations(ofRuntime),
          adapter(activations),
          radio(activations),
          device(activations),
          reader(activations),
          watcher(activations),
          writer(activations) {}

    const Activations activations;
    AdapterFactory adapter;
    RadioFactory radio;
    DeviceFactory device;
    ReaderFactory reader;
    WatcherFactory watcher;
    WriterFactory writer;
};

Factories::Factories(const Activations& ofRuntime) : all(*new All(ofRuntime)) {}

HRESULT Factories::Find(std::u16string_view className, const GUID& iid, void** factory) {
    const struct {
        std::u16string_view className;
        FactoryBase& factory;
    } table[] = {
        {BluetoothAdapter::Name, all.adapter},
        {Radio::Name, all.radio},
        {BluetoothLEDevice::Name, all.device},
        {DataReader::Name, all.reader},
        {BluetoothLEAdvertisementWatcher::Name, all.watcher},
        {DataWriter::Name, all.writer},
    };
    if (factory == nullptr) {
        return E_POINTER;
    }
    *factory = nullptr;
    for (const auto& entry : table) {
        if (entry.className == className) {
            return entry.factory.Get(iid, factory);
        }
    }
    return REGDB_E_CLASSNOTREG;
}

}  // namespace orv::objects
