// Explains why Bluetooth is not available.
#pragma once

#include <string>

namespace orv {

// Returns what is missing and the command that helps, as the end of a message. Call it if the
// library for a real radio reports that Bluetooth is not available.
std::string WhyNotAvailable();

}  // namespace orv
