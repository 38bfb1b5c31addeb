#include "orv/bridge/mqtt/heard_devices.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "orv/address.h"
#include "orv/bridge/mqtt/facts.h"
#include "orv/problem.h"

namespace orv::bridge {

namespace {

using namespace std::chrono_literals;

constexpr auto PollListEvery = 250ms;
constexpr auto ScanAnewEvery = 30s;
constexpr auto ForgetAfter = 90s;
constexpr auto SignalEvery = 10s;
constexpr std::uint8_t Unset = 0xFF;

bool AreEqual(const DiscoveredDevice& one, const DiscoveredDevice& other) {
    return memcmp(&one, &other, sizeof one) == 0;
}

// Keeps earlier values, because a new scan lists a device before its scan response arrives.
void KeepValues(DiscoveredDevice& device, const DiscoveredDevice& before) {
    device.value0500 = device.value0500 == Unset ? before.value0500 : device.value0500;
    device.value1130 = device.value1130 == Unset ? before.value1130 : device.value1130;
    if (std::all_of(std::begin(device.data1118), std::end(device.data1118),
                    [](std::uint8_t byte) { return byte == 0; })) {
        std::copy(std::begin(before.data1118), std::end(before.data1118), device.data1118);
    }
}

}  // namespace

HeardDevices::HeardDevices(Library& loaded, Broker& siteBroker, std::string heardTopic)
    : library(loaded), broker(siteBroker), topic(std::move(heardTopic)) {}

bool HeardDevices::Step(Time now) {
    if (now < nextPoll) {
        return false;
    }
    nextPoll = now + PollListEvery;
    if (scanner) {
        for (const DiscoveredDevice& device : scanner->Heard()) {
            Take(device, now);
        }
    }
    if (now >= nextScan && !isStopped) {
        nextScan = now + ScanAnewEvery;
        scanner.reset();
        ++scans;
        try {
            scanner.emplace(library);
        } catch (const Problem&) {
            // The radio may be off or the system busy; the next scan tries again.
        }
    }
    std::erase_if(devices, [&](auto& entry) {
        const bool isGone = isStopped || now - entry.second.at >= ForgetAfter;
        if (isGone) {
            broker.Retain({topic + AddressText(entry.first), ""});
        }
        return isGone;
    });
    return true;
}

void HeardDevices::Stop() {
    isStopped = true;
    nextPoll = {};
    scanner.reset();
}

void HeardDevices::Take(const DiscoveredDevice& device, Time now) {
    const auto known = devices.find(device.address);
    if (known == devices.end() && devices.size() >= Most) {
        return;
    }
    Heard& heard = devices[device.address];
    DiscoveredDevice merged = device;
    if (known != devices.end()) {
        KeepValues(merged, heard.device);
    }
    if (heard.scan != scans || !AreEqual(merged, heard.device)) {
        heard.device = merged;
        heard.at = now;
        heard.scan = scans;
        Publish(heard, now);
    }
}

void HeardDevices::Publish(Heard& heard, Time now) {
    DiscoveredDevice before = heard.published;
    before.rssi = heard.device.rssi;
    if (!AreEqual(before, heard.device) || now - heard.publishedAt >= SignalEvery) {
        heard.published = heard.device;
        heard.publishedAt = now;
        broker.Retain({topic + AddressText(heard.device.address), HeardFact(heard.device)});
    }
}

std::vector<BluetoothAddress> HeardDevices::Addresses() const {
    std::vector<BluetoothAddress> addresses;
    std::transform(devices.begin(), devices.end(), std::back_inserter(addresses),
                   [](const auto& entry) { return entry.first; });
    return addresses;
}

std::optional<int> HeardDevices::SignalOf(BluetoothAddress address) const {
    const auto found = devices.find(address);
    return found == devices.end() ? std::nullopt : std::optional<int>(found->second.device.rssi);
}

}  // namespace orv::bridge
