#include "orv/scan/scanner.h"

#include <algorithm>

#include "orv/problem.h"

namespace orv {

namespace {

Problem Refused() {
    return {ExitStatus::NoBluetooth,
            "the system refused to scan. Run the command again with --log, then orv log explain "
            "with the log"};
}

}  // namespace

Scanner::Scanner(Library& loaded) : library(loaded), id(loaded.InitializeScanner()) {
    if (id == ORV_FAILED || library.StartScanner(id) == ORV_FAILED) {
        if (id != ORV_FAILED) {
            library.DeinitializeScanner(id);
        }
        throw Refused();
    }
    isRunning = true;
}

Scanner::~Scanner() {
    if (isRunning) {
        library.StopScanner(id);
    }
    library.DeinitializeScanner(id);
}

void Scanner::Restart() {
    earlier = Heard();
    library.StopScanner(id);
    if (library.StartScanner(id) == ORV_FAILED) {
        throw Refused();
    }
}

void Scanner::Stop() {
    isRunning = false;
    if (library.StopScanner(id) == ORV_FAILED) {
        throw Problem(ExitStatus::NoBluetooth,
                      "the system refused to stop the scan, which ends with this program");
    }
}

Devices Scanner::Heard() {
    Devices devices = earlier;
    const std::int32_t count = library.GetDeviceCount(id);
    for (std::int32_t index = 0; index < count; ++index) {
        DiscoveredDevice device;
        if (library.GetDeviceInfo(id, index, device) == ORV_FAILED) {
            continue;
        }
        const auto known = std::find_if(
            devices.begin(), devices.begin() + static_cast<std::ptrdiff_t>(earlier.size()),
            [&](const DiscoveredDevice& one) { return one.address == device.address; });
        if (known != devices.begin() + static_cast<std::ptrdiff_t>(earlier.size())) {
            *known = device;
        } else {
            devices.push_back(device);
        }
    }
    return devices;
}

}  // namespace orv
