#include "bench/support/arrangement.h"

#include <map>

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
    // Reads the bytes instead of discarding them, so that the queue keeps its last memory block,
    // as in a host that polls.
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
        const Lock lock(scannerMutex);
        floorSessions.back().watcher = scannerSessions.sessions.back().watcher.Get();
    }
    while (floorSessions.size() > count) {
        OrvScanner_Deinitialize(floorSessions.back().id);
        floorSessions.pop_back();
    }
}

namespace {

struct Lists {
    DiscoveredDevices ours{{}};  // a constant hash key, so that instruction counts repeat
    FloorList floor;
};

bool IsArranged(std::size_t listed, std::size_t count) {
    return listed >= count && listed <= count + count / 10;
}

DiscoveredDevice ListedDevice(std::size_t index) {
    return NewRecord(ListedAddress + index, "ORV-0042", -60);
}

void Fill(DiscoveredDevices& devices, std::size_t count) {
    devices = DiscoveredDevices({});
    for (std::size_t i = 0; i < count; ++i) {
        devices.Append(ListedDevice(i));
    }
}

void Fill(FloorList& list, std::size_t count) {
    list = {};
    list.places.reserve(count + count / 10 + 1000);
    list.records.reserve(count + count / 10 + 1000);
    for (std::size_t i = 0; i < count; ++i) {
        list.places.emplace(ListedAddress + i, i);
        list.records.push_back(ListedDevice(i));
    }
}

}  // namespace

void ArrangeListed(std::size_t count) {
    ArrangeSessions(1);
    FloorSession& floor = floorSessions.front();
    const Lock lock(scannerMutex);
    watcher = scannerSessions.sessions.front().watcher;
    DiscoveredDevices& devices = scannerSessions.sessions.front().devices;
    static std::map<std::size_t, Lists> kept;  // the lists not in use, by length
    static std::size_t used = 0;
    if (used != count) {
        std::swap(kept[used].ours, devices);
        std::swap(kept[used].floor, floor.devices);
        std::swap(kept[count].ours, devices);
        std::swap(kept[count].floor, floor.devices);
        used = count;
    }
    if (!IsArranged(devices.Size(), count)) {
        Fill(devices, count);
    }
    if (!IsArranged(floor.devices.records.size(), count)) {
        Fill(floor.devices, count);
    }
}

}  // namespace orv::bench
