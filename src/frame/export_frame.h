// Wrappers of exported functions and callbacks. They catch all exceptions; RunExport also logs the
// call.
#pragma once

#include <cstddef>
#include <limits>

#include "frame/failure_log.h"
#include "frame/trace.h"
#include "quelvixwinlib.h"

namespace orv {

constexpr ResultCode Failure = ORV_FAILED;

inline ResultCode CountResult(std::size_t count) {
    constexpr auto Largest = std::numeric_limits<ResultCode>::max();
    return count < Largest ? static_cast<ResultCode>(count) : Largest;
}

// Logs the call, runs `body` and returns its result. If `body` throws, logs the exception after the
// locks of `body` are released, and returns -1.
template <typename Body, typename... Arguments>
ResultCode RunExport(const Traced<Arguments...>& call, Body&& body) noexcept {
    try {
        std::apply([&](auto... arguments) { Trace(call.name, arguments...); }, call.arguments);
        return body();
    } catch (...) {
        LogCurrentException();
        return Failure;
    }
}

// Runs `body` and logs any exception, for code that cannot return a failure, such as a callback.
template <typename Body>
void LogFailuresOf(Body&& body) noexcept {
    try {
        body();
    } catch (...) {
        LogCurrentException();
    }
}

}  // namespace orv
