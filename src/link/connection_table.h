// The open links, oldest first, and the one lock over them and every byte queued on them.
#pragma once

#include <list>

#include "link/receive_queue.h"
#include "platform/abi/gatt.h"
#include "platform/mutex.h"
#include "platform/reference.h"
#include "quelvixwinlib.h"

namespace orv {

// Limit of every wait for a device.
constexpr UINT32 GattWaitLimitMs = 2000;

// One open link. A half-built link is never in the table: connect enters it as its last step.
struct DeviceLink {
    BluetoothAddress address;  // key of by-address lookups; several links may share it
    Reference<IBluetoothLEDevice> device;
    Reference<IGattDeviceService> service;          // null once closed, see OrvDevice_Disconnect
    Reference<IGattCharacteristic> characteristic;  // identity key of incoming notifications
    ReceiveQueue receiveQueue;                      // notified and not yet taken; unbounded
};

// Process-wide.
//
// Threads: `mutex` is held by host threads and by the platform's notification threads. Disconnect
// and send keep it through one wait of at most GattWaitLimitMs, so everything else here may block
// that long; disconnect keeps it also while it closes the device, which has no limit of its own.
// Write the trace line before taking it; log failures after releasing it.
struct ConnectionTable {
    Mutex mutex;
    std::list<DeviceLink> links GUARDED_BY(mutex);

    // The oldest match, or null. Valid until the caller releases `mutex`.
    DeviceLink* FindByAddress(BluetoothAddress address) REQUIRES(mutex);
    DeviceLink* FindByCharacteristic(const Reference<IGattCharacteristic>& sender) REQUIRES(mutex);
};

extern ConnectionTable& connectionTable;

}  // namespace orv
