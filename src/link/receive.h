#pragma once

#include "platform/abi/gatt.h"
#include "platform/reference.h"

namespace orv {

// Appends the value of a notification to the link's queue. The platform's threads call this
// function, several at once, also before the link is in the table and after it was removed. Locks
// the table's mutex.
void OnDataReceived(const Reference<IGattCharacteristic>& sender,
                    const Reference<IGattValueChangedEventArgs>& arguments) noexcept;

}  // namespace orv
