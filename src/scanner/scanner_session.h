// Scanner sessions: a watcher of the platform each, with the list of devices that it has heard.
#pragma once

#include <cstdint>
#include <list>

#include "platform/abi/advertisement.h"
#include "platform/mutex.h"
#include "platform/reference.h"
#include "scanner/discovered_devices.h"

namespace orv {

struct ScannerSession {
    std::int32_t id;  // the host's scannerId; unique among the live sessions
    Reference<IBluetoothLEAdvertisementWatcher> watcher;  // identity key of incoming advertisements
    DiscoveredDevices devices;
};

// Guards the sessions and every list of devices.
//
// Threads: held by host threads and by the platform's advertisement threads. Start and stop keep it
// while they call the watcher, which has no time limit of its own. Write the trace line before
// taking it; log failures after releasing it.
extern Mutex ScannerLock;

// The live sessions in order of creation, which is ascending order of their ids. Process-wide.
struct ScannerSessionList {
    std::list<ScannerSession> sessions GUARDED_BY(ScannerLock);

    // Null when no session has this id. Valid until the caller releases ScannerLock.
    ScannerSession* Find(std::int32_t id) REQUIRES(ScannerLock);
};

extern ScannerSessionList& scannerSessions;

}  // namespace orv
