// What one line of a log says.
#pragma once

#include <cstdint>
#include <string_view>

#include "orv/log/functions.h"

namespace orv::log {

enum class Kind : std::uint8_t {
    Call,           // the trace line of an export
    Advertisement,  // heard by a scanner
    Notification,   // received from a device
    Failure,        // "Exception: ..."
    Result,         // a host's "Returned <result> after <n> ms: <trace text>"
    Host,           // any other line of the host's own
};

// What a call is about. A result line carries the same as the call it belongs to.
struct Subject {
    Function function = Function::Available;
    std::uint64_t handle = 0;  // the address, or the scannerId in its low 32 bits
    std::int32_t number = 0;   // GetDeviceInfo: index; Send: length

    std::int32_t ScannerId() const { return static_cast<std::int32_t>(handle); }
    bool operator==(const Subject&) const = default;
};

struct Entry {
    Kind kind = Kind::Host;
    Subject subject;            // Call, Result; its handle also for Advertisement, Notification
    std::int64_t number = 0;    // Advertisement: dBm; Notification: bytes; Result: the result
    std::int64_t duration = 0;  // Result: ms
    std::string_view words;     // Advertisement: the name; Failure: the text behind "Exception: "
    std::int32_t stamp = 0;     // ms of the day, as it stands in the log
    std::int64_t time = 0;      // ms since the start of the log's first day
    std::uint64_t line = 0;     // number in the file
};

// Never fails: a text of no known form is the host's own.
Entry ReadEntry(std::string_view text);

// An advertisement's text whose name is not closed, so that the name goes on in the next line.
bool HasOpenName(std::string_view text);

}  // namespace orv::log
