#pragma once

#include "platform/abi/advertisement.h"
#include "platform/reference.h"

namespace orv {

// Updates the device list of the session whose watcher is `sender`. Threads of the platform call
// it, several at once, also for watchers of removed sessions. Locks scannerMutex.
void OnAdvertisementReceived(
    const Reference<IBluetoothLEAdvertisementWatcher>& sender,
    const Reference<IBluetoothLEAdvertisementReceivedEventArgs>& arguments) noexcept;

}  // namespace orv
