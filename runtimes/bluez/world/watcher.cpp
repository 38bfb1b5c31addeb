#include "runtimes/bluez/world/watcher.h"

#include "runtimes/bluez/daemon/daemon.h"
#include "runtimes/bluez/world/advertisement.h"

namespace orv::bluez {

namespace {

objects::Class watcherClass("BluetoothLEAdvertisementWatcher");

}  // namespace

BluezBluetoothLEAdvertisementWatcher::BluezBluetoothLEAdvertisementWatcher()
    : Object(watcherClass) {}

HRESULT BluezBluetoothLEAdvertisementWatcher::Activate(IInspectable** instance) {
    return Give(instance, Make<BluezBluetoothLEAdvertisementWatcher>());
}

void BluezBluetoothLEAdvertisementWatcher::Hear(const SharedReport& report) {
    objects::Event<ReceivedHandler>::Handlers handlers;
    {
        const Lock lock(mutex);
        if (started) {
            handlers = received.All();
        }
    }
    for (const auto& handler : handlers) {
        const auto args = Make<BluezBluetoothLEAdvertisementReceivedEventArgs>(report);
        handler->operator->()->Invoke(this, args.Get());
    }
}

ULONG BluezBluetoothLEAdvertisementWatcher::Release() {
    const Ref<BluezBluetoothLEAdvertisementWatcher> kept(this);
    const ULONG left = Object::Release();
    if (left == 0 && IsStarted()) {
        Contained([this] { Switch(false); });
    }
    return left;
}

bool BluezBluetoothLEAdvertisementWatcher::IsStarted() {
    const Lock lock(mutex);
    return started;
}

// Ignores the mode, because the daemon always scans actively.
HRESULT BluezBluetoothLEAdvertisementWatcher::put_ScanningMode(BluetoothLEScanningMode) {
    static Member member(watcherClass.name, "put_ScanningMode");
    return Call(member, [] { return S_OK; });
}

HRESULT BluezBluetoothLEAdvertisementWatcher::Start() {
    static Member member(watcherClass.name, "Start");
    return Call(member, [&] { return Switch(true); });
}

HRESULT BluezBluetoothLEAdvertisementWatcher::Stop() {
    static Member member(watcherClass.name, "Stop");
    return Call(member, [&] { return Switch(false); });
}

HRESULT BluezBluetoothLEAdvertisementWatcher::Switch(bool on) {
    Daemon::Get().Post([watcher = Ref<BluezBluetoothLEAdvertisementWatcher>(this), on] {
        if (on) {
            watcher->self = watcher;
            Daemon::Get().discovery.Add(*watcher.Get());
        } else {
            Daemon::Get().discovery.Remove(*watcher.Get());
            watcher->self = {};
        }
    });
    const Lock lock(mutex);
    started = on;
    return S_OK;
}

HRESULT BluezBluetoothLEAdvertisementWatcher::add_Received(ReceivedHandler* handler,
                                                           EventRegistrationToken* token) {
    static Member member(watcherClass.name, "add_Received");
    return Call(member, [&] {
        return objects::AddHandler(handler, token, [&](auto taken) {
            const Lock lock(mutex);
            return received.Add(std::move(taken));
        });
    });
}

}  // namespace orv::bluez
