// Numbers as people read them.
#pragma once

#include <cstdint>
#include <string>

#include "orv/log/call.h"

namespace orv::log {

// A0:B1:C2:D3:E4:F5; more than 48 bits are shown as one number.
std::string AddressWords(std::uint64_t address);

// hh:mm:ss.mmm, from milliseconds of the day.
std::string StampWords(std::int64_t milliseconds);

// "2003 ms", "up to 80 ms", "120 ms or more".
std::string DurationWords(const Bounds& bounds);

// "OrvDevice_Send A0:B1:C2:D3:E4:F5 20": the trace text with the address as people write it.
std::string CallWords(const Subject& subject);

// "1 line", "12 lines".
std::string Count(std::int64_t count, const char* noun);

}  // namespace orv::log
