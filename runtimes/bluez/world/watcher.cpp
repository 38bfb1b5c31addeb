#include "runtimes/bluez/world/watcher.h"

#include "runtimes/bluez/daemon/daemon.h"

namespace orv::bluez {

HRESULT BluezBluetoothLEAdvertisementWatcher::Activate(IInspectable** instance) {
    return Give(instance, objects::Make<BluezBluetoothLEAdvertisementWatcher>());
}

void BluezBluetoothLEAdvertisementWatcher::Hear(const objects::SharedPacket& packet) {
    objects::Event<objects::ReceivedHandler>::Handlers handlers;
    if (started) {
        const Lock lock(mutex);
        handlers = received.All();
    }
    for (const auto& handler : handlers) {
        handler->operator->()->Invoke(this, objects::MakeReceivedArgs(packet).Get());
    }
}

ULONG BluezBluetoothLEAdvertisementWatcher::Release() {
    const objects::Ref<BluezBluetoothLEAdvertisementWatcher> kept(this);
    const ULONG left = WatcherObject::Release();
    if (left == 0 && started) {
        Contained([this] { Switch(false); });
    }
    return left;
}

void BluezBluetoothLEAdvertisementWatcher::Switch(bool on) {
    const auto self =
        std::make_shared<Discovery::Watchers>(Discovery::Watchers{objects::ShareAs<Watcher>(this)});
    Daemon::Get().loop.Post([self, on] {
        Discovery& discovery = Daemon::Get().discovery;
        on ? discovery.Add(*self) : discovery.Remove(*self->begin());
    });
    started = on;
}

EventRegistrationToken BluezBluetoothLEAdvertisementWatcher::AddHandler(
    objects::SharedHandler<objects::ReceivedHandler> handler) {
    const Lock lock(mutex);
    return received.Add(std::move(handler));
}

}  // namespace orv::bluez
