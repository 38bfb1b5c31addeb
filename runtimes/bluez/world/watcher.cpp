#include "runtimes/bluez/world/watcher.h"

#include "runtimes/bluez/daemon/daemon.h"

namespace orv::bluez {

HRESULT BluezBluetoothLEAdvertisementWatcher::Activate(IInspectable** instance) {
    return Give(instance, objects::Make<BluezBluetoothLEAdvertisementWatcher>());
}

void BluezBluetoothLEAdvertisementWatcher::Hear(const objects::SharedPacket& packet) {
    objects::Event<objects::ReceivedHandler>::Handlers handlers;
    {
        const Lock lock(mutex);
        if (started) {
            handlers = received.All();
        }
    }
    for (const auto& handler : handlers) {
        handler->operator->()->Invoke(this, objects::MakeReceivedArgs(packet).Get());
    }
}

ULONG BluezBluetoothLEAdvertisementWatcher::Release() {
    const objects::Ref<BluezBluetoothLEAdvertisementWatcher> kept(this);
    const ULONG left = WatcherObject::Release();
    if (left == 0 && IsStarted()) {
        Contained([this] { Switch(false); });
    }
    return left;
}

bool BluezBluetoothLEAdvertisementWatcher::IsStarted() {
    const Lock lock(mutex);
    return started;
}

void BluezBluetoothLEAdvertisementWatcher::Switch(bool on) {
    Daemon::Get().Post([watcher = objects::ShareAs<Watcher>(this), on] {
        Discovery& discovery = Daemon::Get().discovery;
        on ? discovery.Add(watcher) : discovery.Remove(watcher);
    });
    const Lock lock(mutex);
    started = on;
}

EventRegistrationToken BluezBluetoothLEAdvertisementWatcher::AddHandler(
    objects::SharedHandler<objects::ReceivedHandler> handler) {
    const Lock lock(mutex);
    return received.Add(std::move(handler));
}

}  // namespace orv::bluez
