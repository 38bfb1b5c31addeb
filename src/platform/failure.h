// How failing calls of the runtime and the operating system are raised.
#pragma once

#include "platform/abi/base.h"

namespace orv {

// A failing call, with the code that it gave. Deliberately not a std::exception: the log tells
// failures of the platform from the library's own.
struct PlatformFailure {
    HRESULT code;
};

// Raises `code`: out of memory as std::bad_alloc, everything else as PlatformFailure.
[[noreturn]] void RaiseFailure(HRESULT code);

inline void CheckResult(HRESULT code) {
    if (Failed(code)) {
        RaiseFailure(code);
    }
}

}  // namespace orv
