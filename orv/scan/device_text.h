// A device's values as text, and lists of devices for other programs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quelvixwinlib.h"

namespace orv {

std::string_view NameOf(const DiscoveredDevice& device);

// Two hexadecimal digits; empty while no scan response has brought the value.
std::string ValueText(std::uint8_t value);
// The 16 bytes up to the last that is not 0.
std::string DataText(const DiscoveredDevice& device);

std::string HexText(std::string_view bytes);

// An array of objects, in ASCII: other characters are escaped, bytes that are no UTF-8 are U+FFFD.
std::string JsonOf(const std::vector<DiscoveredDevice>& devices);

// A table with a head, a line for each device. A name that a spreadsheet would run as a formula has
// an apostrophe in front.
std::string CsvOf(const std::vector<DiscoveredDevice>& devices);

}  // namespace orv
