#pragma once

#include <list>

#include "link/receive_queue.h"
#include "platform/abi/gatt.h"
#include "platform/mutex.h"
#include "platform/reference.h"
#include "quelvixwinlib.h"

namespace orv {

constexpr UINT32 GattWaitLimitMs = 2000;

// OrvDevice_Connect inserts a link in its last step, so every link in the table is complete.
struct DeviceLink {
    BluetoothAddress address;  // several links may have the same address
    Reference<IBluetoothLEDevice> device;
    Reference<IGattDeviceService> service;          // null after OrvDevice_Disconnect closed it
    Reference<IGattCharacteristic> characteristic;  // sender of the link's notifications
    ReceiveQueue receiveQueue;
};

// All open links of the process, oldest first. `mutex` guards the links and their queues.
//
// Threads: host threads and the platform's notification threads lock `mutex`. OrvDevice_Disconnect
// and OrvDevice_Send hold it during one wait of at most GattWaitLimitMs. OrvDevice_Disconnect also
// holds it while it closes the device, which has no timeout. Do not write to the log while holding
// it.
struct ConnectionTable {
    Mutex mutex;
    std::list<DeviceLink> links GUARDED_BY(mutex);

    // Returns the oldest link of the address, or null. The pointer is valid until the caller
    // releases `mutex`.
    DeviceLink* FindByAddress(BluetoothAddress address) REQUIRES(mutex);
    DeviceLink* FindByCharacteristic(const Reference<IGattCharacteristic>& sender) REQUIRES(mutex);
};

extern ConnectionTable& connectionTable;

}  // namespace orv
