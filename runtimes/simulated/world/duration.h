#pragma once

#include <chrono>

namespace orv::simulated {

using Duration = std::chrono::nanoseconds;

}  // namespace orv::simulated
