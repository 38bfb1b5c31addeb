#include "frame/export_frame.h"
#include "link/gatt_steps.h"
#include "platform/wait.h"

namespace orv {

namespace {

// Switches notifications off, closes the service and returns it, so that the caller can release it
// later. If the caller then fails to close the device, the link stays in the table without a
// service. The next disconnect skips this step, because a closed service rejects writes.
Reference<IGattDeviceService> SilenceAndCloseService(DeviceLink& link) {
    if (!link.service) {
        return nullptr;
    }
    // Ignores the status: the link is removed even if the device rejects the write or times out.
    WaitForCompletion(
        StartNotifyWrite(link, GattClientCharacteristicConfigurationDescriptorValue::None),
        GattWaitLimitMs);
    Close(link.service);
    return std::move(link.service);
}

void Take(const DeviceLink* link, std::list<DeviceLink>& removed) REQUIRES(connectionTable.mutex) {
    auto& links = connectionTable.links;
    auto place = links.begin();
    while (&*place != link) {
        ++place;
    }
    removed.splice(removed.end(), links, place);
}

}  // namespace

}  // namespace orv

using namespace orv;

extern "C" ResultCode OrvDevice_Disconnect(BluetoothAddress address) {
    return RunExport(Traced("OrvDevice_Disconnect", address), [&]() -> ResultCode {
        // `removed` and `closed` are destroyed after the lock is released: their final release runs
        // platform code, which may wait for a notification handler that waits for this lock.
        std::list<DeviceLink> removed;
        Reference<IGattDeviceService> closed;
        const Lock lock(connectionTable.mutex);
        DeviceLink* link = connectionTable.FindByAddress(address);
        if (!link) {
            return Failure;
        }
        closed = SilenceAndCloseService(*link);
        Close(link->device);
        Take(link, removed);
        return 0;
    });
}
