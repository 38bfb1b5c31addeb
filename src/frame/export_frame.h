// The frame around every exported function and callback: the trace line first, then the work, and
// no failure that gets out.
#pragma once

#include <cstddef>
#include <limits>
#include <string_view>
#include <tuple>

#include "frame/diagnostics_log.h"
#include "frame/failure_log.h"
#include "platform/text.h"
#include "quelvixwinlib.h"

namespace orv {

constexpr ResultCode Failure = ORV_FAILED;

// A count as a result; one that does not fit must never look like a failure.
inline ResultCode CountResult(std::size_t count) {
    constexpr auto Largest = std::numeric_limits<ResultCode>::max();
    return count < Largest ? static_cast<ResultCode>(count) : Largest;
}

// Writes the trace line: the name, then each argument in decimal after one space. Nothing is
// composed while the log is off; an ordinary line is composed on the stack and cannot fail.
template <typename... Arguments>
void Trace(std::string_view name, Arguments... arguments) {
    if (!diagnosticsLog.IsEnabled()) {
        return;
    }
    Text line;
    line.Append(name);
    ((line.Append(' '), line.AppendNumber(arguments)), ...);
    AppendLogLine(line.View());
}

// An exported function and its traced arguments, until the frame writes them.
template <typename... Arguments>
struct Traced {
    explicit Traced(std::string_view exportName, Arguments... traced)
        : name(exportName), arguments(traced...) {}
    std::string_view name;
    std::tuple<Arguments...> arguments;
};

// Runs `body` and returns its result. Whatever is thrown on the way ends as one failure line and
// -1; by then the stack has unwound, so no lock that `body` took is held.
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

// Runs what has nobody to tell of its failure, such as a callback of the platform.
template <typename Body>
void LogFailuresOf(Body&& body) noexcept {
    try {
        body();
    } catch (...) {
        LogCurrentException();
    }
}

}  // namespace orv
