// The base class of watchers, which records calls to them and rejects wrong arguments.
#pragma once

#include "runtimes/objects/event.h"
#include "runtimes/objects/object.h"
#include "runtimes/objects/stubs/advertisement.h"

namespace orv::objects {

using ReceivedHandler =
    TypedEventHandler<BluetoothLEAdvertisementWatcher, BluetoothLEAdvertisementReceivedEventArgs>;

class WatcherObject : public Object<Stub<IBluetoothLEAdvertisementWatcher>> {
  public:
    WatcherObject();

    HRESULT put_ScanningMode(BluetoothLEScanningMode value) final;
    HRESULT Start() final;
    HRESULT Stop() final;
    HRESULT add_Received(ReceivedHandler* handler, EventRegistrationToken* token) final;

  private:
    virtual void SetMode(BluetoothLEScanningMode value) = 0;
    virtual void Switch(bool on) = 0;
    virtual EventRegistrationToken AddHandler(SharedHandler<ReceivedHandler> handler) = 0;
};

}  // namespace orv::objects
