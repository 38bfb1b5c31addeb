// The configured answer to an operation of a device, the adapter or the radios.
#pragma once

#include <optional>

#include "runtimes/objects/operation.h"
#include "runtimes/simulated/world/duration.h"

namespace orv::simulated {

struct Answer {
    enum class Timing { Standard, AtOnce, After, Never };

    Timing timing = Timing::Standard;
    Duration delay{0};
    AsyncStatus ending = AsyncStatus::Completed;
    HRESULT startCode = S_OK;
    HRESULT registrationCode = S_OK;
    HRESULT resultCode = S_OK;
    bool nullResult = false;
    std::optional<INT32> status;
    bool emptyList = false;

    // Returns the answer that makes an operation never end.
    static Answer Silence();
    // Sets the property that `manner`, an OrvAnswer_ value, selects. Returns false if `manner` or
    // `value` is invalid.
    bool Set(INT32 manner, INT32 value);
    objects::Ending Ending() const;
};

}  // namespace orv::simulated
