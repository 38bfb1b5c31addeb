#pragma once

#include <cstdint>
#include <list>

#include "platform/abi/advertisement.h"
#include "platform/mutex.h"
#include "platform/reference.h"
#include "scanner/discovered_devices.h"

namespace orv {

struct ScannerSession {
    std::int32_t id;  // the host's scannerId, unique among existing sessions
    Reference<IBluetoothLEAdvertisementWatcher> watcher;
    DiscoveredDevices devices;
};

// Guards the sessions and their lists.
//
// Threads: host threads and the platform's advertisement threads lock it. OrvScanner_Start and
// OrvScanner_Stop hold it while they call the watcher; these calls have no timeout. Do not write to
// the log while holding it.
extern Mutex scannerMutex;

// All sessions of the process in order of creation, so that their ids ascend.
struct ScannerSessionList {
    std::list<ScannerSession> sessions GUARDED_BY(scannerMutex);

    // Returns the session with this id, or null. The pointer is valid until the caller releases
    // scannerMutex.
    ScannerSession* Find(std::int32_t id) REQUIRES(scannerMutex);
};

extern ScannerSessionList& scannerSessions;

}  // namespace orv
