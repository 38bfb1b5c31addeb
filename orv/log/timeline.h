// The log's stamps, which carry no date, put on one line of time.
#pragma once

#include <cstdint>

namespace orv::log {

// Stamps may step back a little between threads, jump back to 0 at midnight, and jump by any amount
// when the machine's clock is set. A single line that disagrees with both its neighbours, such as
// one that a device's name forged, does not move the others.
class Timeline {
  public:
    // Milliseconds since the start of the first day, for the next line's stamp.
    std::int64_t Place(std::int32_t stamp);

    // How often the stamps jumped back without midnight.
    int Jumps() const { return jumps; }

  private:
    std::int64_t shift = 0;        // what is added to a stamp
    std::int64_t formerShift = 0;  // before the latest jump
    std::int64_t latest = -1;      // the latest time placed; -1: none yet
    std::int64_t former = -1;      // the latest time but one
    bool jumped = false;           // the line before was a jump
    int jumps = 0;
};

}  // namespace orv::log
