// Publishes the devices of the family that this gateway has received recently.
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

// Restarts the scan every 30 s, because forged devices could fill the library's list.
class HeardDevices {
  public:
    // Maximum number of devices, because an attacker can advertise any number.
    static constexpr std::size_t Most = 4096;

    // Publishes each device under `topic` followed by its address.
    HeardDevices(Library& library, Broker& broker, std::string topic);

    // Reads the list four times a second, and publishes changes: of the signal every 10 s, others
    // at once. Repeats a refused scan after 30 s. Returns whether the list was read.
    bool Step(Time now);
    // Ends the scan permanently. The next Step removes all devices.
    void Stop();

    std::vector<BluetoothAddress> Addresses() const;
    // Returns the signal in dBm, or nothing if the device was not received for 90 s.
    std::optional<int> SignalOf(BluetoothAddress address) const;

  private:
    struct Heard {
        DiscoveredDevice device{};
        Time at;            // last change, or detection by a new scan
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
