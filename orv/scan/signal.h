#pragma once

#include <algorithm>
#include <cstddef>

namespace orv {

// Returns the length of a bar, from 0 to `full`, for a signal strength in dBm.
inline std::size_t SignalShare(int signal, std::size_t full) {
    // In dBm: about the weakest signal that a radio receives, and the signal of a near device.
    constexpr int Weakest = -100;
    constexpr int Strongest = -40;
    const int clamped = std::clamp(signal, Weakest, Strongest) - Weakest;
    return (static_cast<std::size_t>(clamped) * full + (Strongest - Weakest) / 2) /
           static_cast<std::size_t>(Strongest - Weakest);
}

}  // namespace orv
