#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quelvixwinlib.h"

namespace orv {

std::string_view NameOf(const DiscoveredDevice& device);

// Returns `value0500` or `value1130` of a device as two hexadecimal digits, or an empty text for
// 0xFF, which means that no scan response has set it.
std::string ValueText(std::uint8_t value);
// Returns the device's `data1118` as hexadecimal digits, without zero bytes at the end.
std::string DataText(const DiscoveredDevice& device);

std::string HexText(std::string_view bytes);

// Returns a JSON array of objects in ASCII, with other characters escaped. Bytes that are not UTF-8
// become U+FFFD.
std::string JsonOf(const std::vector<DiscoveredDevice>& devices);

// Returns a title line and a line for each device. Prevents a spreadsheet from reading a name as a
// formula.
std::string CsvOf(const std::vector<DiscoveredDevice>& devices);

}  // namespace orv
