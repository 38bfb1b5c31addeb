#include "orv/scan/history.h"

#include <cstring>

#include "orv/scan/device_text.h"
#include "orv/scan/signal.h"

namespace orv {

namespace {

// Signal strength of a device that the system no longer receives.
constexpr int NoLongerHeard = -127;

}  // namespace

void ScanHistory::Add(const std::vector<DiscoveredDevice>& devices, double second) {
    now = second;
    for (const DiscoveredDevice& device : devices) {
        const auto [at, isNew] = known.try_emplace(device.address);
        Known& entry = at->second;
        if (isNew || std::memcmp(&entry.record, &device, sizeof device) != 0) {
            entry.record = device;
            entry.changedAt = second;
        }
        if (!orv::NameOf(device).empty()) {
            entry.name = orv::NameOf(device);
        }
    }
}

void ScanHistory::AddSignals(const std::vector<DiscoveredDevice>& devices) {
    for (const DiscoveredDevice& device : devices) {
        std::vector<int>& signals = known[device.address].signals;
        signals.push_back(IsGone(device) ? NoLongerHeard : device.rssi);
        if (signals.size() > Signals) {
            signals.erase(signals.begin());
        }
    }
}

std::string ScanHistory::SignalsOf(BluetoothAddress address) const {
    static constexpr const char* Steps[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    std::string text;
    for (const int signal : known.at(address).signals) {
        text += Steps[SignalShare(signal, std::size(Steps) - 1)];
    }
    return text;
}

std::string ScanHistory::NameOf(BluetoothAddress address) const {
    return known.at(address).name;
}

double ScanHistory::SecondsSinceHeard(BluetoothAddress address) const {
    return now - known.at(address).changedAt;
}

bool ScanHistory::IsGone(const DiscoveredDevice& device) const {
    return device.rssi == NoLongerHeard || SecondsSinceHeard(device.address) >= GoneAfterSeconds;
}

}  // namespace orv
