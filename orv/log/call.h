// One call of the library as far as its log tells.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "orv/log/entry.h"

namespace orv::log {

// What is known of the link or session that a call names, all the time that the call ran.
enum class Presence : std::uint8_t { Unknown, Present, Absent };

// Why a failure line that was written during a call may not be the call's own.
enum class Owner : std::uint8_t { ThisCall, ThisOrCallback, ThisOrOther };

// The failure lines written while a call ran.
struct Failures {
    int count = 0;
    bool outOfMemory = false;  // the first says so
    bool unknownType = false;  // the first is a failure of the system
    std::int64_t first = 0;    // ms from the start of the call to the first
    std::string text;          // of the first, behind "Exception: "
    Owner owner = Owner::ThisCall;
};

// Milliseconds. The two are equal where a result line gives the duration.
struct Bounds {
    std::int64_t atLeast = 0;
    std::optional<std::int64_t> atMost;

    bool Exact() const { return atMost == atLeast; }
};

struct Call {
    Subject subject;
    std::int32_t stamp = 0;  // of its trace line
    std::int64_t start = 0;
    std::uint64_t line = 0;
    std::optional<std::int32_t> result;
    bool resultLogged = false;  // by the host; else concluded, or unknown
    bool logEnded = false;      // the log ends, and it may still have been running
    Bounds duration;
    std::int64_t lockWait = 0;  // at most so long it may have waited for calls of other threads
    Failures failures;
    Presence presence = Presence::Unknown;
    bool indexListed = false;        // GetDeviceInfo: the list was that long
    bool lastLink = false;           // Disconnect: no other link of the address is known
    std::int32_t notifications = 0;  // Connect: traced for its address while it ran
    std::int64_t notifiedBytes = 0;

    // Its own time, without what it may have waited for others: the least and the most.
    std::int64_t OwnAtLeast() const {
        return duration.atLeast > lockWait ? duration.atLeast - lockWait : 0;
    }
};

}  // namespace orv::log
