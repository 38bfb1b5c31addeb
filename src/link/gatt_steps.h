#pragma once

#include "link/connection_table.h"
#include "platform/abi/bluetooth.h"
#include "platform/call.h"

namespace orv {

// Starts the write that switches notifications on or off.
inline auto StartNotifyWrite(const DeviceLink& link,
                             GattClientCharacteristicConfigurationDescriptorValue value) {
    return Get(link.characteristic,
               &IGattCharacteristic::WriteClientCharacteristicConfigurationDescriptorAsync, value);
}

template <typename Interface>
void Close(const Reference<Interface>& object) {
    Call(object.template As<IClosable>(), &IClosable::Close);
}

}  // namespace orv
