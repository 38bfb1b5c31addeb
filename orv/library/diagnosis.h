#pragma once

#include <string>

namespace orv {

// Returns why Bluetooth is not available and which command helps, as the end of a message. Call it
// only in that case, with the library for a real radio.
std::string WhyNotAvailable();

}  // namespace orv
