// The states that benchmarks start from.
#include "bench/support/arrangement.h"

#include "link/connection_table.h"
#include "scanner/scanner_session.h"

namespace orv::bench {

std::mutex floorMutex;
std::list<FloorLink> floorLinks;
std::list<FloorSession> floorSessions;
Reference<IBluetoothLEAdvertisementWatcher>& watcher =
    *new Reference<IBluetoothLEAdvertisementWatcher>;

void ArrangeLinks(std::size_t count) {
    while (floorLinks.size() < count) {
        const BluetoothAddress address = floorLinks.size() + 1;
        OrvDevice_Connect(address);
        floorLinks.emplace_back();
        floorLinks.back().address = address;
        floorLinks.back().characteristic = &DeviceOf(address).characteristic;
    }
    while (floorLinks.size() > count) {
        OrvDevice_Disconnect(floorLinks.back().address);
        floorLinks.pop_back();
    }
}

void ArrangeQueue(std::size_t bytes) {
    FloorLink& floor = floorLinks.front();
    if (floor.bytes.size() < bytes + 65536) {
        floor.bytes.resize(bytes + 65536);
    }
    floor.begin = 0;
    floor.end = bytes;
    const Lock lock(connectionTable.mutex);
    ReceiveQueue& queue = connectionTable.links.front().receiveQueue;
    // Taken out rather than dropped: a host that polls leaves the queue its last block.
    static std::vector<BYTE> scratch(1 << 16);
    while (queue.Take(scratch.data(), scratch.size()) > 0) {
    }
    for (std::size_t i = 0; i < bytes; ++i) {
        queue.Append(static_cast<BYTE>(i));
    }
}

Reference<IGattCharacteristic> SenderOf(BluetoothAddress address) {
    return Reference<IGattCharacteristic>(&DeviceOf(address).characteristic);
}

void ArrangeSessions(std::size_t count) {
    while (floorSessions.size() < count) {
        const ResultCode id = OrvScanner_Initialize();
        floorSessions.emplace_back();
        floorSessions.back().id = id;
        const Lock lock(ScannerLock);
        floorSessions.back().watcher = scannerSessions.sessions.back().watcher.Get();
    }
    while (floorSessions.size() > count) {
        OrvScanner_Deinitialize(floorSessions.back().id);
        floorSessions.pop_back();
    }
}

void ArrangeListed(std::size_t count) {
    ArrangeSessions(1);
    FloorSession& floor = floorSessions.front();
    const Lock lock(ScannerLock);
    watcher = scannerSessions.sessions.front().watcher;
    DiscoveredDevices& devices = scannerSessions.sessions.front().devices;
    if (devices.Size() == count && floor.records.size() == count) {
        return;
    }
    devices.Clear();
    floor.addresses.clear();
    floor.records.clear();
    for (std::size_t i = 0; i < count; ++i) {
        const DiscoveredDevice device = NewRecord(ListedAddress + i, "ORV-0042", -60);
        devices.Append(device);
        floor.addresses.push_back(device.address);
        floor.records.push_back(device);
    }
}

}  // namespace orv::bench
