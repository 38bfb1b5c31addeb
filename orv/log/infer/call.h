// A library call, reconstructed from the log.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "orv/log/read/entry.h"

namespace orv::log {

// Present: the call's link or session existed during the whole call. Absent: at no time during it.
enum class Presence : std::uint8_t { Unknown, Present, Absent };

// Who may have written the failure lines of a call.
enum class Owner : std::uint8_t { ThisCall, ThisOrCallback, ThisOrOther };

// The failure lines that appear during a call.
struct Failures {
    std::int64_t count = 0;
    bool outOfMemory = false;       // the first failure line means that memory ran out
    bool systemCallFailed = false;  // the first failure line means that a system call failed
    std::int64_t first = 0;         // ms from the start of the call to the first failure line
    std::string text;               // beginning of the first failure line, without "Exception: "
    Owner owner = Owner::ThisCall;
};

// Bounds of a duration in ms. They are equal if a result line states the duration.
struct Bounds {
    std::int64_t atLeast = 0;
    std::optional<std::int64_t> atMost;

    bool Exact() const { return atMost == atLeast; }
};

// What the log shows about the call's device before the call.
struct DeviceEvidence {
    bool isKnown = false;  // the system knows the address from an earlier advertisement or link
    bool isBusy = false;   // an earlier connect timed out, and the system may still be connecting
};

struct Call {
    Subject subject;
    std::int32_t stamp = 0;  // time stamp of the trace line
    std::int64_t start = 0;
    std::uint64_t line = 0;
    std::optional<std::int32_t> result;
    bool resultLogged = false;  // a result line states `result`
    bool logEnded = false;      // the log ends during the call
    bool isHanging = false;     // the result line is missing, so the call did not return
    Bounds duration;
    std::int64_t lockWait = 0;  // longest possible wait in ms for locks of other calls
    Failures failures;
    Presence presence = Presence::Unknown;
    DeviceEvidence device;
    bool indexListed = false;        // for GetDeviceInfo: the index was certainly valid
    bool lastLink = false;           // for Disconnect: no known link of the address remains
    std::int64_t notifications = 0;  // for Connect: notifications of the device during the call
    std::int64_t notifiedBytes = 0;

    std::int64_t OwnAtLeast() const {
        return duration.atLeast > lockWait ? duration.atLeast - lockWait : 0;
    }
};

}  // namespace orv::log
