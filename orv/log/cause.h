// Why a call fails or takes long: everything that its log line may stand for.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orv/log/functions.h"

namespace orv::log {

enum class Cause : std::uint8_t {
    LimitPassed,      // a wait of 2000 ms went by without an answer
    Refused,          // the device or the system answered no
    Ended,            // the system ended the operation without an answer
    UnknownDevice,    // the system knows no device of this address
    NotOffered,       // the device lacks the family's service or characteristic
    NoAdapter,        //
    NoRadioOn,        //
    NoLink,           // the address has no link
    NoSession,        // no scanner has this id
    IndexOutOfRange,  //
    NegativeLength,   //
    NullPointer,      //
    SystemFailure,    // a call into the system failed
    OutOfMemory,      //
    StandardFailure,  // a container's limit, or a failure of the log's own
    ClosingFailed,    // refused silently, and the failure line is that of the closing
    ClosingSlow,      // closing what was opened has no time limit
    WaitedForOthers,  // the lock was held by another call
    SystemSlow,       // a call into the system that has no time limit took long
    SlowAnswers,      // within the limits
    LineMissing,      // none of the above, so a failure line is not in the log
    StillRunning,     // the log ends inside the call
};

constexpr int CauseCount = 22;

// Which of a function's waits a cause may be about: bit 0 is the first.
using Steps = std::uint8_t;

struct Suspect {
    Cause cause;
    Steps steps = 0;  // none: it is about no wait
};

// Likelier ones first. Empty: nothing to explain.
using Suspects = std::vector<Suspect>;

struct CauseTexts {
    std::string_view id;      // for programs; never changes
    std::string_view what;    // a clause: "the address has no link"
    std::string_view tell;    // what would show that it was this one
    std::string_view advice;  // what a host does about it
};

const CauseTexts& TextsOf(Cause cause);

// What the waits of a function are for, such as "looking up the service".
std::string_view StepName(Function function, int step);
// "looking up the device or the service": the steps of a suspect in words; empty when there are
// none.
std::string StepWords(Function function, Steps steps);

}  // namespace orv::log
