// Connects the factories to the world.
#include "runtimes/simulated/exports/factories.h"

#include "runtimes/objects/factories.h"
#include "runtimes/simulated/world/device.h"
#include "runtimes/simulated/world/radio.h"
#include "runtimes/simulated/world/watcher.h"

namespace orv::simulated {

namespace {

class SimulatedActivations final : public objects::Activations {
  public:
    HRESULT GetDefaultAdapterAsync(IAsyncOperation<BluetoothAdapter>** operation) override {
        return SimulatedBluetoothAdapter::GetDefaultAsync(operation);
    }
    HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation) override {
        return SimulatedRadio::GetRadiosAsync(operation);
    }
    HRESULT FromBluetoothAddressAsync(UINT64 address,
                                      IAsyncOperation<BluetoothLEDevice>** operation) override {
        return SimulatedBluetoothLEDevice::FromBluetoothAddressAsync(address, operation);
    }
    HRESULT ActivateWatcher(IInspectable** instance) override {
        return SimulatedBluetoothLEAdvertisementWatcher::Activate(instance);
    }
    bool AreFactoriesAgile() const override { return World::Get().factoriesAgile; }
};

}  // namespace

HRESULT FindFactory(std::u16string_view className, const GUID& iid, void** factory) {
    static auto* const factories = new objects::Factories(*new SimulatedActivations);
    return factories->Find(className, iid, factory);
}

}  // namespace orv::simulated
