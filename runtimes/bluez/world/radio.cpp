#include "runtimes/bluez/world/radio.h"

#include "runtimes/bluez/world/promise.h"
#include "runtimes/objects/stubs/bluetooth.h"
#include "runtimes/objects/stubs/radios.h"
#include "runtimes/objects/vector.h"

namespace orv::bluez {

namespace {

objects::Class adapterClass("BluetoothAdapter");
objects::Class radioClass("Radio");

class BluezBluetoothAdapter final : public objects::Object<objects::Stub<IBluetoothAdapter>> {
  public:
    BluezBluetoothAdapter() : Object(adapterClass) {}
};

class BluezRadio final : public objects::Object<objects::Stub<IRadio>> {
  public:
    explicit BluezRadio(RadioState stateOfRadio) : Object(radioClass), state(stateOfRadio) {}

    HRESULT get_State(RadioState* value) override {
        static Member member(radioClass.name, "get_State");
        return Property(member, value, state);
    }
    HRESULT get_Kind(RadioKind* value) override {
        static Member member(radioClass.name, "get_Kind");
        return Property(member, value, RadioKind::Bluetooth);
    }

  private:
    const RadioState state;
};

using Radios = objects::VectorView<Radio, BluezRadio>;

}  // namespace

HRESULT GetDefaultAdapterAsync(IAsyncOperation<BluetoothAdapter>** operation) {
    return StartOperation<BluetoothAdapter, Ref<BluezBluetoothAdapter>>(
        operation, [](const auto& promise) {
            Daemon::Get().WhenKnown([promise] {
                promise->Complete(Daemon::Get().tree.Adapters().empty()
                                      ? Ref<BluezBluetoothAdapter>()
                                      : Make<BluezBluetoothAdapter>());
            });
        });
}

HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation) {
    return StartOperation<IVectorView<Radio>, Ref<Radios>>(operation, [](const auto& promise) {
        Daemon::Get().WhenKnown([promise] {
            std::vector<Ref<BluezRadio>> radios;
            for (const auto& [path, adapter] : Daemon::Get().tree.Adapters()) {
                radios.push_back(
                    Make<BluezRadio>(adapter.powered ? RadioState::On : RadioState::Off));
            }
            promise->Complete(Make<Radios>(std::move(radios)));
        });
    });
}

}  // namespace orv::bluez
