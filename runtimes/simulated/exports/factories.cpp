#include "runtimes/simulated/exports/factories.h"

#include "runtimes/objects/factories.h"
#include "runtimes/simulated/world/device.h"
#include "runtimes/simulated/world/radio.h"
#include "runtimes/simulated/world/watcher.h"

namespace orv::simulated {

HRESULT FindFactory(std::u16string_view className, const GUID& iid, void** factory) {
    static auto* const factories =
        new objects::Factories({&GetDefaultAdapterAsync, &GetRadiosAsync,
                                &SimulatedBluetoothLEDevice::FromBluetoothAddressAsync,
                                &SimulatedBluetoothLEAdvertisementWatcher::Activate,
                                [] { return World::Get().factoriesAgile.load(); }});
    return factories->Find(className, iid, factory);
}

}  // namespace orv::simulated
