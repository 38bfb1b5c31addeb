#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orv/scan/scanner.h"

namespace orv {

// The help text of an argument that names a device.
extern const char* const DeviceForms;

constexpr int SearchSeconds = 10;

// Returns whether a text is an address or a name that begins with ORV.
bool IsDevice(std::string_view text);
// Throws a Problem if a text names no device or two texts name the same one.
void CheckDevices(const std::vector<std::string>& texts);

// Each text is the address or the name of a device. Returns the addresses in the same order. If
// there are names, scans for at most SearchSeconds and prints the addresses found. Throws a Problem
// if a name is not found or ambiguous, or if two texts name the same device.
std::vector<BluetoothAddress> FindDevices(Library& library, const std::vector<std::string>& texts);
BluetoothAddress FindDevice(Library& library, const std::string& text);

// Scans until the device advertises. Returns nothing after SearchSeconds.
std::optional<DiscoveredDevice> SearchDevice(Library& library, BluetoothAddress address);
// Like SearchDevice, but without output and on any thread. Also returns nothing if `isStopped`
// returns true or the scan is rejected.
std::optional<DiscoveredDevice> SearchSilently(Library& library, BluetoothAddress address,
                                               const std::function<bool()>& isStopped);

}  // namespace orv
