// A call of a library function, as reconstructed from the log.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "orv/log/read/entry.h"

namespace orv::log {

// States whether the call's link or session existed during the whole call.
enum class Presence : std::uint8_t { Unknown, Present, Absent };

// The possible writers of the failure lines of a call.
enum class Owner : std::uint8_t { ThisCall, ThisOrCallback, ThisOrOther };

// The failure lines of a call.
struct Failures {
    std::int64_t count = 0;
    bool outOfMemory = false;  // the first line reports that memory ran out
    bool unknownType = false;  // the first line reports a failure of the system
    std::int64_t first = 0;    // ms from the start of the call to the first line
    std::string text;          // beginning of the first line, without "Exception: "
    Owner owner = Owner::ThisCall;
};

// Bounds of a duration in ms. Both are equal if a result line states the duration.
struct Bounds {
    std::int64_t atLeast = 0;
    std::optional<std::int64_t> atMost;

    bool Exact() const { return atMost == atLeast; }
};

// The state of the call's device before the call, as far as the log shows it.
struct DeviceEvidence {
    bool isKnown = false;  // advertised or connected before, so the system knows its address
    bool isBusy = false;   // an earlier connect timed out, and the system may still be connecting
};

struct Call {
    Subject subject;
    std::int32_t stamp = 0;  // time stamp of the trace line
    std::int64_t start = 0;
    std::uint64_t line = 0;
    std::optional<std::int32_t> result;
    bool resultLogged = false;  // false if the result was concluded or is unknown
    bool logEnded = false;      // the log ends during the call
    bool isHanging = false;     // no result line, so the call did not return
    Bounds duration;
    std::int64_t lockWait = 0;  // maximum time in ms of waiting for other calls
    Failures failures;
    Presence presence = Presence::Unknown;
    DeviceEvidence device;
    bool indexListed = false;        // for GetDeviceInfo: the index was in the list
    bool lastLink = false;           // for Disconnect: it closed the last known link of the address
    std::int64_t notifications = 0;  // for Connect: notifications from its address during the call
    std::int64_t notifiedBytes = 0;

    // Returns the minimum duration without the time of waiting for other calls.
    std::int64_t OwnAtLeast() const {
        return duration.atLeast > lockWait ? duration.atLeast - lockWait : 0;
    }
};

}  // namespace orv::log
