// The factories of the six runtime classes.
#include "runtimes/simulated/factories.h"

#include "runtimes/objects/streams.h"
#include "runtimes/simulated/device.h"
#include "runtimes/simulated/radio.h"
#include "runtimes/simulated/watcher.h"

namespace orv::simulated {

using objects::Argument;
using objects::Call;
using objects::Make;
using objects::Member;
using objects::Stub;

namespace {

objects::Class adapterFactory("BluetoothAdapter");
objects::Class radioFactory("Radio");
objects::Class watcherFactory("BluetoothLEAdvertisementWatcher");
objects::Class deviceFactory("BluetoothLEDevice");
objects::Class readerFactory("DataReader");
objects::Class writerFactory("DataWriter");

class FactoryBase {
  public:
    virtual HRESULT Get(const GUID& iid, void** factory) = 0;

  protected:
    ~FactoryBase() = default;
};

// Lives for ever; the library's references to it are not counted.
template <typename... Interfaces>
class Factory : public objects::Object<Interfaces..., IActivationFactory>, public FactoryBase {
  public:
    explicit Factory(objects::Class& runtimeClass)
        : objects::Object<Interfaces..., IActivationFactory>(runtimeClass, nullptr),
          className(runtimeClass.name) {
        this->Keep();
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
        return objects::Unexpected(className, "ActivateInstance");
    }

  private:
    bool IsAgile() const override { return World::Get().factoriesAgile; }

    const char* const className;
};

class AdapterFactory final : public Factory<Stub<IBluetoothAdapterStatics>> {
  public:
    AdapterFactory() : Factory(adapterFactory) {}

    HRESULT GetDefaultAsync(IAsyncOperation<BluetoothAdapter>** operation) override {
        static Member member(adapterFactory.name, "GetDefaultAsync");
        return Call(member, [&] { return SimulatedBluetoothAdapter::GetDefaultAsync(operation); });
    }
};

class RadioFactory final : public Factory<Stub<IRadioStatics>> {
  public:
    RadioFactory() : Factory(radioFactory) {}

    HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation) override {
        static Member member(radioFactory.name, "GetRadiosAsync");
        return Call(member, [&] { return SimulatedRadio::GetRadiosAsync(operation); });
    }
};

class DeviceFactory final : public Factory<Stub<IBluetoothLEDeviceStatics>> {
  public:
    DeviceFactory() : Factory(deviceFactory) {}

    HRESULT FromBluetoothAddressAsync(UINT64 address,
                                      IAsyncOperation<BluetoothLEDevice>** operation) override {
        static Member member(deviceFactory.name, "FromBluetoothAddressAsync");
        return Call(member, Argument::Number(address), [&] {
            return SimulatedBluetoothLEDevice::FromBluetoothAddressAsync(address, operation);
        });
    }
};

class ReaderFactory final : public Factory<Stub<IDataReaderStatics>> {
  public:
    ReaderFactory() : Factory(readerFactory) {}

    HRESULT FromBuffer(IBuffer* buffer, IDataReader** reader) override {
        static Member member(readerFactory.name, "FromBuffer");
        return Call(member, [&] { return objects::MemoryReader::FromBuffer(buffer, reader); });
    }
};

class WatcherFactory final : public Factory<> {
  public:
    WatcherFactory() : Factory(watcherFactory) {}

    HRESULT ActivateInstance(IInspectable** instance) override {
        static Member member(watcherFactory.name, "ActivateInstance");
        return Call(member,
                    [&] { return SimulatedBluetoothLEAdvertisementWatcher::Activate(instance); });
    }
};

class WriterFactory final : public Factory<> {
  public:
    WriterFactory() : Factory(writerFactory) {}

    HRESULT ActivateInstance(IInspectable** instance) override {
        static Member member(writerFactory.name, "ActivateInstance");
        return Call(member, [&] { return Give(instance, Make<objects::MemoryWriter>()); });
    }
};

struct Factories {
    AdapterFactory adapter;
    RadioFactory radio;
    DeviceFactory device;
    ReaderFactory reader;
    WatcherFactory watcher;
    WriterFactory writer;
};

}  // namespace

HRESULT FindFactory(std::u16string_view className, const GUID& iid, void** factory) {
    static Factories* const factories = new Factories;
    const struct {
        std::u16string_view className;
        FactoryBase& factory;
    } table[] = {
        {BluetoothAdapter::Name, factories->adapter},
        {Radio::Name, factories->radio},
        {BluetoothLEDevice::Name, factories->device},
        {DataReader::Name, factories->reader},
        {BluetoothLEAdvertisementWatcher::Name, factories->watcher},
        {DataWriter::Name, factories->writer},
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

}  // namespace orv::simulated
