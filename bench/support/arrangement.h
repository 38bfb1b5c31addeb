// Prepares a benchmark's initial state, in the library and in the floor (a minimal hand-written
// host). Reuses existing state to be fast.
#pragma once

#include <cstdint>
#include <list>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "bench/runtime/advertisement.h"
#include "platform/reference.h"
#include "quelvixwinlib.h"

namespace orv::bench {

// Opens links with the addresses 1 (the oldest) to `count`.
void ArrangeLinks(std::size_t count);
// Makes link 1 hold exactly `bytes` received bytes, in the library and in the minimal host.
void ArrangeQueue(std::size_t bytes);
// Returns the characteristic that the runtime passes to the library's notification callback.
Reference<IGattCharacteristic> SenderOf(BluetoothAddress address);

// Creates sessions with ids 0 to count - 1.
void ArrangeSessions(std::size_t count);
// Creates session 0 with `count` devices, at ListedAddress and the following addresses. Reuses a
// list that is up to 10 % longer, because filling long lists is slow.
void ArrangeListed(std::size_t count);
constexpr BluetoothAddress ListedAddress = 0xA0B1C2000000;
// The platform's advertisement watcher that scanner session 0 uses.
extern Reference<IBluetoothLEAdvertisementWatcher>& watcher;

struct FloorLink {
    BluetoothAddress address = 0;
    IGattCharacteristic* characteristic = nullptr;
    std::vector<BYTE> bytes;  // storage of the queue; never shrinks
    std::size_t begin = 0;    // index of the first queued byte
    std::size_t end = 0;
};
struct FloorList {
    std::unordered_map<BluetoothAddress, std::size_t> places;
    std::vector<DiscoveredDevice> records;
};
struct FloorSession {
    std::int32_t id = 0;
    IBluetoothLEAdvertisementWatcher* watcher = nullptr;
    FloorList devices;
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
