#pragma once

#include <atomic>

#include "runtimes/bluez/daemon/discovery.h"
#include "runtimes/objects/watcher.h"

namespace orv::bluez {

// Calls handlers on the event loop's thread, so a handler must not wait for an asynchronous
// operation. The library's handler waits only for a mutex that is never held during a wait for the
// loop.
class BluezBluetoothLEAdvertisementWatcher final : public objects::WatcherObject, public Watcher {
  public:
    static HRESULT Activate(IInspectable** instance);

    void Hear(const objects::SharedPacket& packet) override;

    // Stops the watcher when the last reference is released, because no caller can stop it later.
    ULONG Release() override;

  private:
    // Ignores the mode, because the daemon always scans actively.
    void SetMode(BluetoothLEScanningMode) override {}
    // Returns before the scan starts or ends.
    void Switch(bool on) override;
    EventRegistrationToken AddHandler(
        objects::SharedHandler<objects::ReceivedHandler> handler) override;

    std::atomic<bool> started{false};
    Mutex mutex;
    objects::Event<objects::ReceivedHandler> received GUARDED_BY(mutex);
};

}  // namespace orv::bluez
