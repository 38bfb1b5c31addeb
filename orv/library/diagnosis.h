#pragma once

#include <string>

namespace orv {

// Returns the end of a message: why no radio is on and what to do. Call it only if the library uses
// real radios and BluetoothAvailable has failed.
std::string WhyNotAvailable();

}  // namespace orv
