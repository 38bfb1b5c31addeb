#pragma once

#include "platform/abi/base.h"

namespace orv {

// The exception for a failed call. It is not derived from std::exception, because the log
// distinguishes failures of the platform from other exceptions.
struct PlatformFailure {
    HRESULT code;
};

// Throws std::bad_alloc for an out-of-memory code, otherwise PlatformFailure.
[[noreturn]] void RaiseFailure(HRESULT code);

inline void CheckResult(HRESULT code) {
    if (Failed(code)) {
        RaiseFailure(code);
    }
}

}  // namespace orv
