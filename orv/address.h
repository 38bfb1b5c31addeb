#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quelvixwinlib.h"

namespace orv {

std::optional<BluetoothAddress> FindAddress(std::string_view text);

// Returns a text such as A0:B1:C2:D3:E4:F5, or a decimal number for an invalid address of more than
// 48 bits, which a log may contain.
std::string AddressText(BluetoothAddress address);

}  // namespace orv
