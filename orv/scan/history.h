#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "quelvixwinlib.h"

namespace orv {

class ScanHistory {
  public:
    static constexpr std::size_t Signals = 8;
    static constexpr double GoneAfterSeconds = 5;

    // Call this at each poll. A changed record counts as a new packet, because nearly every packet
    // changes the signal strength.
    void Add(const std::vector<DiscoveredDevice>& devices, double second);
    void AddSignals(const std::vector<DiscoveredDevice>& devices);

    // Returns bars for the latest signal strengths, oldest first.
    std::string SignalsOf(BluetoothAddress address) const;
    // Returns the latest name that was not empty, because a packet without a name empties the
    // record's name.
    std::string NameOf(BluetoothAddress address) const;
    double SecondsSinceHeard(BluetoothAddress address) const;
    // Returns whether the device has sent nothing for 5 s, or the system no longer receives it.
    bool IsGone(const DiscoveredDevice& device) const;

  private:
    struct Known {
        DiscoveredDevice record;
        double changedAt;
        std::string name;
        std::vector<int> signals;
    };
    std::map<BluetoothAddress, Known> known;
    double now = 0;
};

}  // namespace orv
