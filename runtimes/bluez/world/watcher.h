// A watcher of advertisements.
#pragma once

#include "runtimes/bluez/daemon/discovery.h"
#include "runtimes/bluez/world/objects.h"
#include "runtimes/objects/event.h"
#include "runtimes/objects/object.h"
#include "runtimes/objects/stubs/advertisement.h"

namespace orv::bluez {

using ReceivedHandler =
    TypedEventHandler<BluetoothLEAdvertisementWatcher, BluetoothLEAdvertisementReceivedEventArgs>;

// Calls handlers on the loop's thread, so a handler must not wait for an asynchronous operation.
// The library's handler waits only for a mutex that is never held during a wait for the loop.
class BluezBluetoothLEAdvertisementWatcher final
    : public objects::Object<objects::Stub<IBluetoothLEAdvertisementWatcher>>,
      public Watcher {
  public:
    BluezBluetoothLEAdvertisementWatcher();

    static HRESULT Activate(IInspectable** instance);

    void Hear(const SharedReport& report) override;

    // Stops the watcher when the last reference is released, because no caller can stop it later.
    ULONG Release() override;

    HRESULT put_ScanningMode(BluetoothLEScanningMode value) override;
    // Start and Stop return at once. The scan starts or ends soon afterwards.
    HRESULT Start() override;
    HRESULT Stop() override;
    HRESULT add_Received(ReceivedHandler* handler, EventRegistrationToken* token) override;

  private:
    // Starts or stops the watcher on the loop's thread, and keeps it alive until then.
    HRESULT Switch(bool on);
    bool IsStarted();

    Mutex mutex;
    bool started GUARDED_BY(mutex) = false;
    objects::Event<ReceivedHandler> received GUARDED_BY(mutex);
    // Keeps the watcher alive while it is started. Only the loop's thread uses it.
    objects::Ref<BluezBluetoothLEAdvertisementWatcher> self;
};

}  // namespace orv::bluez
