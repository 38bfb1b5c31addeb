#pragma once

#include <chrono>

#include "platform/abi/base.h"

namespace orv::objects {

inline INT64 UnixTimeMs() noexcept {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace orv::objects
