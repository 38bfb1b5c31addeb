#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orv/log/infer/call.h"

namespace orv::log {

enum class Cause : std::uint8_t {
    LimitPassed,     // a wait for the system timed out after 2000 ms
    SystemBusy,      // the system was still connecting for an earlier call
    Unacknowledged,  // the device accepted the block, but acknowledged it too late
    InUse,           // another program uses the device's service
    Refused,         // the device or the system rejected the operation
    Ended,           // the system ended the operation without an answer
    UnknownDevice,   // the system knows no device with this address
    NotOffered,      // the device lacks the required service or characteristic
    NoAdapter,
    NoRadioOn,
    NoLink,
    NoSession,
    IndexOutOfRange,
    NegativeLength,
    NullPointer,
    SystemFailure,
    OutOfMemory,
    StandardFailure,  // an exception of the C++ standard library except bad_alloc
    ClosingFailed,    // connect failed, then closing the device wrote a failure line
    ClosingSlow,      // closing the device has no timeout and was slow
    ClosingHangs,
    WaitedForOthers,  // another call held the lock
    SystemSlow,       // a system call without a timeout was slow
    SlowAnswers,      // the waits took long, but did not time out
    LineMissing,      // no cause fits, so a failure line is missing in the log
    StillRunning,     // the log ends during the call
};

constexpr int CauseCount = 26;

// A set of the steps in which a function waits for the system. Bit 0 is the first one.
using Steps = std::uint8_t;

struct Suspect {
    Cause cause;
    Steps steps = 0;  // waits in which the cause may occur; 0 if none
};

// Possible causes, the likeliest first. Empty if there is nothing to explain.
using Suspects = std::vector<Suspect>;

// Returns all causes that the log does not exclude. A successful call has causes only if it was
// slow. A call with an unknown result is explained like a failed call.
Suspects Explain(const Call& call);

// Returns whether the result is known or the log shows a sign of failure.
bool HasSign(const Call& call);

constexpr std::int64_t WaitLimit = 2000;

// Tolerances in ms, because timers can end a wait early and threads can continue late.
constexpr std::int64_t Early = 20;
constexpr std::int64_t Late = 100;

// Bounds in ms of the time from a call's start to the end of its last wait. The waits follow each
// other; each takes at most WaitLimit.
struct WaitTimes {
    std::int64_t atLeast;
    std::int64_t atMost;

    // Of the first `count` waits, returns those that may have timed out.
    Steps Missed(int count) const {
        return Among(count, [this](std::int64_t waits) {
            return atMost >= WaitLimit - Early && atLeast <= waits * (WaitLimit + Late);
        });
    }

    // Of the first `count` waits, returns those that may have ended the call without a timeout.
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
