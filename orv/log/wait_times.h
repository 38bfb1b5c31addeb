// What the time that a call took says about its waits.
#pragma once

#include <cstdint>

#include "orv/log/cause.h"

namespace orv::log {

constexpr std::int64_t WaitLimit = 2000;

// A machine's timers end a wait a little early, and its threads go on a little late.
constexpr std::int64_t Early = 20;
constexpr std::int64_t Late = 100;

// Between these, in ms, ended the wait that decided a call. The waits come one after the other and
// each takes at most WaitLimit, so a time tells how many there must have been.
struct WaitTimes {
    std::int64_t atLeast;
    std::int64_t atMost;

    // The waits, of `count`, that may have missed the limit: the earlier ones took what is left.
    Steps Missed(int count) const {
        return Among(count, [this](std::int64_t waits) {
            return atMost >= WaitLimit - Early && atLeast <= waits * (WaitLimit + Late);
        });
    }

    // The waits, of `count`, that may have been answered in a way that decided the call.
    Steps Answered(int count) const {
        return Among(count, [this](std::int64_t waits) { return atLeast < waits * WaitLimit; });
    }

  private:
    template <typename May>
    static Steps Among(int count, May may) {
        int steps = 0;
        for (int step = 0; step < count; ++step) {
            steps |= may(step + 1) ? 1 << step : 0;
        }
        return static_cast<Steps>(steps);
    }
};

}  // namespace orv::log
