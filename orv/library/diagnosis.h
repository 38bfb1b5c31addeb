// Explains why Bluetooth is not available.
#pragma once

#include <string>

namespace orv {

// Returns what is missing and which command helps, as the end of a message. Call it only with the
// library for a real radio, if Bluetooth is not available.
std::string WhyNotAvailable();

}  // namespace orv
