#include "link/connection_table.h"

#include "platform/process_wide.h"

namespace orv {

static ProcessWide<ConnectionTable> processWideTable;
ConnectionTable& connectionTable = processWideTable.object;

DeviceLink* ConnectionTable::FindByAddress(BluetoothAddress address) {
    for (DeviceLink& link : links) {
        if (link.address == address) {
            return &link;
        }
    }
    return nullptr;
}

DeviceLink* ConnectionTable::FindByCharacteristic(const Reference<IGattCharacteristic>& sender) {
    return FindSameObject(links, &DeviceLink::characteristic, sender);
}

}  // namespace orv
