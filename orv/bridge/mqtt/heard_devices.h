// Publishes the ORV devices that this gateway has heard recently.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "orv/bridge/mqtt/broker.h"
#include "orv/bridge/mqtt/claim.h"
#include "orv/scan/scanner.h"

namespace orv::bridge {

// Restarts the scan every 30 s, because forged advertisements could fill the library's list.
class HeardDevices {
  public:
    // Limits the number of devices, because an attacker can advertise any number.
    static constexpr std::size_t Most = 4096;

    // Publishes each device under `topic` followed by its address.
    HeardDevices(Library& library, Broker& broker, std::string topic);

    // Reads the library's device list four times a second. Publishes signal changes every 10 s,
    // other changes at once. Repeats a failed scan after 30 s. Returns true if it read the list.
    bool Step(Time now);
    // Ends the scan permanently. The next Step removes all devices.
    void Stop();

    std::vector<BluetoothAddress> Addresses() const;
    // Returns the signal in dBm, or nothing if the device was not heard for 90 s.
    std::optional<int> SignalOf(BluetoothAddress address) const;

  private:
    struct Heard {
        DiscoveredDevice device{};
        Time at;            // time of the last change, or when a scan first listed the device
        unsigned scan = 0;  // number of the latest scan that detected the device
        DiscoveredDevice published{};
        Time publishedAt;
    };

    void Take(const DiscoveredDevice& device, Time now);
    void Publish(Heard& heard, Time now);

    Library& library;
    Broker& broker;
    const std::string topic;
    std::optional<Scanner> scanner;
    bool isStopped = false;
    Time nextScan;
    Time nextPoll;
    unsigned scans = 0;
    std::map<BluetoothAddress, Heard> devices;
};

}  // namespace orv::bridge
