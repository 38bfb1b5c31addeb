#include "runtimes/bluez/world/radio.h"

#include "runtimes/bluez/world/promise.h"
#include "runtimes/objects/radio.h"
#include "runtimes/objects/vector.h"

namespace orv::bluez {

HRESULT GetDefaultAdapterAsync(IAsyncOperation<BluetoothAdapter>** operation) {
    return StartOperation<BluetoothAdapter, Ref<objects::AdapterObject>>(
        operation, [](const auto& promise) {
            Daemon::Get().WhenKnown([promise] {
                promise->Complete(Daemon::Get().tree.Adapters().empty()
                                      ? Ref<objects::AdapterObject>()
                                      : Make<objects::AdapterObject>());
            });
        });
}

HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation) {
    using Radios = objects::VectorView<Radio, objects::RadioObject>;
    return StartOperation<IVectorView<Radio>, Ref<Radios>>(operation, [](const auto& promise) {
        Daemon::Get().WhenKnown([promise] {
            std::vector<Ref<objects::RadioObject>> radios;
            for (const auto& [path, adapter] : Daemon::Get().tree.Adapters()) {
                radios.push_back(Make<objects::RadioObject>(
                    RadioKind::Bluetooth, adapter.powered ? RadioState::On : RadioState::Off));
            }
            promise->Complete(Make<Radios>(std::move(radios)));
        });
    });
}

}  // namespace orv::bluez
