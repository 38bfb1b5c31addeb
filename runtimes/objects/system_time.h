#pragma once

#include <chrono>

#include "platform/abi/base.h"

namespace orv::objects {

// Returns the milliseconds since 1970-01-01 00:00 UTC.
inline INT64 UnixTimeMs() noexcept {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace orv::objects
