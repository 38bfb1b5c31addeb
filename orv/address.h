// Addresses of devices as people write them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quelvixwinlib.h"

namespace orv {

// What the help of every command with an address says of its forms.
extern const char* const AddressForms;

// Nothing: it is no address.
std::optional<BluetoothAddress> FindAddress(std::string_view text);
// Throws a Problem that names the forms.
BluetoothAddress AddressOf(std::string_view text);

// As A0:B1:C2:D3:E4:F5.
std::string AddressText(BluetoothAddress address);

}  // namespace orv
