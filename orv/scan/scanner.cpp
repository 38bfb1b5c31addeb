#include "orv/scan/scanner.h"

#include "orv/problem.h"

namespace orv {

Scanner::Scanner(Library& loaded) : library(loaded), id(loaded.InitializeScanner()) {
    if (id == ORV_FAILED || library.StartScanner(id) == ORV_FAILED) {
        if (id != ORV_FAILED) {
            library.DeinitializeScanner(id);
        }
        throw Problem(ExitStatus::NoBluetooth,
                      "the system refused to scan: try again with --log, which tells why");
    }
    isRunning = true;
}

Scanner::~Scanner() {
    if (isRunning) {
        library.StopScanner(id);
    }
    library.DeinitializeScanner(id);
}

void Scanner::Stop() {
    isRunning = false;
    if (library.StopScanner(id) == ORV_FAILED) {
        throw Problem(ExitStatus::NoBluetooth,
                      "the system refused to stop the scan, which ends with this program");
    }
}

Devices Scanner::Heard() {
    Devices devices;
    const std::int32_t count = library.GetDeviceCount(id);
    for (std::int32_t index = 0; index < count; ++index) {
        DiscoveredDevice device;
        if (library.GetDeviceInfo(id, index, device) != ORV_FAILED) {
            devices.push_back(device);
        }
    }
    return devices;
}

}  // namespace orv
