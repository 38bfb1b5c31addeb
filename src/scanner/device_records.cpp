#include "frame/export_frame.h"
#include "scanner/scanner_session.h"

using namespace orv;

extern "C" ResultCode OrvScanner_GetDeviceCount(std::int32_t scannerId) {
    return RunExport(Traced("OrvScanner_GetDeviceCount", scannerId), [&]() -> ResultCode {
        const Lock lock(scannerMutex);
        const ScannerSession* session = scannerSessions.Find(scannerId);
        return session ? CountResult(session->devices.Size()) : Failure;
    });
}

extern "C" ResultCode OrvScanner_GetDeviceInfo(std::int32_t scannerId, std::int32_t index,
                                               DiscoveredDevice* info) {
    return RunExport(Traced("OrvScanner_GetDeviceInfo", scannerId, index), [&]() -> ResultCode {
        const Lock lock(scannerMutex);
        const ScannerSession* session = scannerSessions.Find(scannerId);
        if (!session || !info || index < 0 ||
            static_cast<std::size_t>(index) >= session->devices.Size()) {
            return Failure;
        }
        *info = session->devices.At(static_cast<std::size_t>(index));
        return 0;
    });
}
