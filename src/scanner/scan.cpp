#include <limits>

#include "frame/export_frame.h"
#include "platform/activation.h"
#include "platform/handler.h"
#include "platform/system.h"
#include "scanner/advertisement_handler.h"
#include "scanner/scanner_session.h"

namespace orv {

namespace {

// Creates a watcher that scans actively and calls OnAdvertisementReceived. Drops the registration
// token, because the handler is never unregistered.
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

// Creates a random key. Do not hold scannerMutex, because the system may load a library to create
// random numbers, which can block.
AddressHash::Key DrawKey() {
    return {system::RandomBits(), system::RandomBits()};
}

// Moves the only session in `created` to the end of the list and returns its new id, or -1 if all
// ids are used.
ResultCode Enter(std::list<ScannerSession>& created) {
    const Lock lock(scannerMutex);
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

// Moves the session with this id to `removed`. Returns false when there is none.
bool Take(std::int32_t id, std::list<ScannerSession>& removed) {
    const Lock lock(scannerMutex);
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
        created.push_back({0, CreateWatcher(), DiscoveredDevices(DrawKey())});
        return Enter(created);
    });
}

extern "C" ResultCode OrvScanner_Deinitialize(std::int32_t scannerId) {
    return RunExport(Traced("OrvScanner_Deinitialize", scannerId), [&]() -> ResultCode {
        // The session is destroyed after the lock is released. The watcher's final release runs
        // platform code, which may wait for an advertisement handler that waits for this lock.
        std::list<ScannerSession> removed;
        return Take(scannerId, removed) ? 0 : Failure;
    });
}

extern "C" ResultCode OrvScanner_Start(std::int32_t scannerId) {
    return RunExport(Traced("OrvScanner_Start", scannerId), [&]() -> ResultCode {
        std::unique_ptr<DiscoveredDevices::Content> forgotten;  // freed after the lock is released
        const Lock lock(scannerMutex);
        ScannerSession* session = scannerSessions.Find(scannerId);
        if (!session) {
            return Failure;
        }
        forgotten = session->devices.TakeContent();
        Call(session->watcher, &IBluetoothLEAdvertisementWatcher::Start);
        return 0;
    });
}

extern "C" ResultCode OrvScanner_Stop(std::int32_t scannerId) {
    return RunExport(Traced("OrvScanner_Stop", scannerId), [&]() -> ResultCode {
        const Lock lock(scannerMutex);
        ScannerSession* session = scannerSessions.Find(scannerId);
        if (!session) {
            return Failure;
        }
        Call(session->watcher, &IBluetoothLEAdvertisementWatcher::Stop);
        return 0;
    });
}
