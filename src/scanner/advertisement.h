// What the library does with an advertisement.
#pragma once

#include "platform/abi/advertisement.h"
#include "platform/reference.h"

namespace orv {

// Handler of every watcher's Received event. Runs on threads of the platform, possibly several at
// once, also for watchers whose session is gone. Takes ScannerLock.
void OnAdvertisementReceived(
    const Reference<IBluetoothLEAdvertisementWatcher>& sender,
    const Reference<IBluetoothLEAdvertisementReceivedEventArgs>& arguments) noexcept;

}  // namespace orv
