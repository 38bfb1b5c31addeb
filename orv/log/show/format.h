#pragma once

#include <cstdint>
#include <string>

#include "orv/log/infer/call.h"

namespace orv::log {

// Returns hh:mm:ss.mmm for milliseconds since midnight.
std::string StampWords(std::int64_t milliseconds);

// Returns a text such as "2003 ms", "up to 80 ms" or "120 ms or more".
std::string DurationWords(const Bounds& bounds);

// Returns the trace text with a readable address: "OrvDevice_Send A0:B1:C2:D3:E4:F5 20".
std::string CallWords(const Subject& subject);

}  // namespace orv::log
