// The list of devices as a table that fits the terminal.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "quelvixwinlib.h"

namespace orv {

// The latest values of signal strength of each device, oldest first.
class SignalHistory {
  public:
    static constexpr std::size_t Length = 8;

    void Add(const std::vector<DiscoveredDevice>& devices);
    // A bar for each value, the higher the stronger.
    std::string Of(BluetoothAddress address) const;

  private:
    std::map<BluetoothAddress, std::vector<int>> signals;
};

// A head, then a line for each device, none longer than `columns`. In a narrow terminal whole
// columns are left out, the least important first. `history` null: without that column.
std::vector<std::string> TableOf(const std::vector<DiscoveredDevice>& devices, std::size_t columns,
                                 const SignalHistory* history);

}  // namespace orv
