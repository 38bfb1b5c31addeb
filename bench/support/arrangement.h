// Brings the library, and the floors beside it, into the state that a benchmark starts from. What
// is there already is kept, so that arranging again costs nothing.
#pragma once

#include <cstdint>
#include <list>
#include <mutex>
#include <vector>

#include "bench/runtime/advertisement.h"
#include "platform/reference.h"
#include "quelvixwinlib.h"

namespace orv::bench {

// Links are numbered by address: 1 is the oldest.
void ArrangeLinks(std::size_t count);
// Empties the queue of link 1 and fills it with `bytes`, the library's and the floor's.
void ArrangeQueue(std::size_t bytes);
// What the library passes to its callback for a device.
Reference<IGattCharacteristic> SenderOf(BluetoothAddress address);

// Sessions with ids 0 to count - 1.
void ArrangeSessions(std::size_t count);
// One session, of id 0, with this many devices, of addresses ListedAddress + 0, 1, 2 ...
void ArrangeListed(std::size_t count);
constexpr BluetoothAddress ListedAddress = 0xA0B1C2000000;
// The watcher of that session.
extern Reference<IBluetoothLEAdvertisementWatcher>& watcher;

// What a host would keep by hand.
struct FloorLink {
    BluetoothAddress address = 0;
    IGattCharacteristic* characteristic = nullptr;
    std::vector<BYTE> bytes;  // as long as they ever were
    std::size_t begin = 0;    // of those that are queued
    std::size_t end = 0;
};
struct FloorSession {
    std::int32_t id = 0;
    IBluetoothLEAdvertisementWatcher* watcher = nullptr;
    std::vector<BluetoothAddress> addresses;
    std::vector<DiscoveredDevice> records;
};
extern std::mutex floorMutex;
extern std::list<FloorLink> floorLinks;
extern std::list<FloorSession> floorSessions;

inline FloorLink* FindFloorLink(BluetoothAddress address) {
    for (FloorLink& link : floorLinks) {
        if (link.address == address) {
            return &link;
        }
    }
    return nullptr;
}
inline FloorSession* FindFloorSession(std::int32_t id) {
    for (FloorSession& session : floorSessions) {
        if (session.id == id) {
            return &session;
        }
    }
    return nullptr;
}

}  // namespace orv::bench
