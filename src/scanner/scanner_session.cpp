#include "scanner/scanner_session.h"

#include <limits>

#include "frame/export_frame.h"
#include "platform/activation.h"
#include "platform/handler.h"
#include "platform/process_wide.h"
#include "scanner/advertisement.h"

namespace orv {

Mutex ScannerLock;

static ProcessWide<ScannerSessionList> processWideSessions;
ScannerSessionList& scannerSessions = processWideSessions.object;

ScannerSession* ScannerSessionList::Find(std::int32_t id) {
    for (ScannerSession& session : sessions) {
        if (session.id == id) {
            return &session;
        }
    }
    return nullptr;
}

namespace {

// A watcher that scans actively and reports to OnAdvertisementReceived. Not started. The handler
// stays registered for the watcher's whole life, so the registration's token is dropped.
Reference<IBluetoothLEAdvertisementWatcher> CreateWatcher() {
    using Watcher = IBluetoothLEAdvertisementWatcher;
    auto watcher = Activate<BluetoothLEAdvertisementWatcher>();
    Call(watcher, &Watcher::put_ScanningMode, BluetoothLEScanningMode::Active);
    const auto handler =
        EventHandler<BluetoothLEAdvertisementWatcher,
                     BluetoothLEAdvertisementReceivedEventArgs>::Create(OnAdvertisementReceived);
    Get(watcher, &Watcher::add_Received, handler.Get());
    return watcher;
}

// Appends the one session in `created` and returns its id.
ResultCode Enter(std::list<ScannerSession>& created) {
    const Lock lock(ScannerLock);
    auto& sessions = scannerSessions.sessions;
    if (!sessions.empty()) {
        if (sessions.back().id == std::numeric_limits<std::int32_t>::max()) {
            return Failure;
        }
        created.front().id = sessions.back().id + 1;
    }
    const std::int32_t id = created.front().id;
    sessions.splice(sessions.end(), created);
    return id;
}

// Takes the session out and leaves it in `removed`. False when there is none.
bool Take(std::int32_t id, std::list<ScannerSession>& removed) {
    const Lock lock(ScannerLock);
    auto& sessions = scannerSessions.sessions;
    for (auto session = sessions.begin(); session != sessions.end(); ++session) {
        if (session->id == id) {
            removed.splice(removed.end(), sessions, session);
            return true;
        }
    }
    return false;
}

}  // namespace

}  // namespace orv

using namespace orv;

extern "C" ResultCode OrvScanner_Initialize(void) {
    return RunExport(Traced("OrvScanner_Initialize"), []() -> ResultCode {
        std::list<ScannerSession> created;
        created.push_back({0, CreateWatcher(), {}});
        return Enter(created);
    });
}

extern "C" ResultCode OrvScanner_Deinitialize(std::int32_t scannerId) {
    return RunExport(Traced("OrvScanner_Deinitialize", scannerId), [&]() -> ResultCode {
        // Destroyed without the lock: the watcher's final release is the platform's code, which may
        // wait for an advertisement that itself waits for the lock.
        std::list<ScannerSession> removed;
        return Take(scannerId, removed) ? 0 : Failure;
    });
}

extern "C" ResultCode OrvScanner_Start(std::int32_t scannerId) {
    return RunExport(Traced("OrvScanner_Start", scannerId), [&]() -> ResultCode {
        const Lock lock(ScannerLock);
        ScannerSession* session = scannerSessions.Find(scannerId);
        if (!session) {
            return Failure;
        }
        session->devices.Clear();
        Call(session->watcher, &IBluetoothLEAdvertisementWatcher::Start);
        return 0;
    });
}

extern "C" ResultCode OrvScanner_Stop(std::int32_t scannerId) {
    return RunExport(Traced("OrvScanner_Stop", scannerId), [&]() -> ResultCode {
        const Lock lock(ScannerLock);
        ScannerSession* session = scannerSessions.Find(scannerId);
        if (!session) {
            return Failure;
        }
        Call(session->watcher, &IBluetoothLEAdvertisementWatcher::Stop);
        return 0;
    });
}
