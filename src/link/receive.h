// What the library does with a notification.
#pragma once

#include "platform/abi/gatt.h"
#include "platform/reference.h"

namespace orv {

// Handler of the link characteristic's ValueChanged event. Runs on threads of the platform,
// possibly several at once, from before the link is in the table until long after it has left.
// Takes the connection table's mutex.
void OnDataReceived(const Reference<IGattCharacteristic>& sender,
                    const Reference<IGattValueChangedEventArgs>& arguments) noexcept;

}  // namespace orv
