// The content of a log line, and the library's functions that appear in it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace orv::log {

enum class Function : std::uint8_t {
    Available,
    Initialize,
    Deinitialize,
    Start,
    Stop,
    GetDeviceCount,
    GetDeviceInfo,
    Connect,
    Disconnect,
    Send,
    Receive,
    Flush,
};

constexpr int FunctionCount = 12;

enum class Family : std::uint8_t { Availability, Scanner, Link };

// The arguments after the function's name in a trace line.
enum class Traces : std::uint8_t { Nothing, Scanner, ScannerAndNumber, Address, AddressAndNumber };

struct FunctionFacts {
    Function function;
    std::string_view name;
    Family family;
    Traces traces;
    int waits;       // maximum number of waits, each of at most 2000 ms
    bool holdsLock;  // holds a lock; functions with the same name prefix wait for it
};

const FunctionFacts& FactsOf(Function function);

std::optional<Function> FindFunction(std::string_view name);

enum class Kind : std::uint8_t {
    Call,  // trace line of an exported function
    Advertisement,
    Notification,
    Failure,  // "Exception: ..."
    Result,   // a host's "Returned <result> after <n> ms: <trace text>"
    Host,     // any other line, written by the host
};

// The function and arguments of a call. A result line repeats them.
struct Subject {
    Function function = Function::Available;
    std::uint64_t handle = 0;  // address, or scannerId in the low 32 bits
    std::int32_t number = 0;   // index of GetDeviceInfo or length of Send

    std::int32_t ScannerId() const { return static_cast<std::int32_t>(handle); }
    bool operator==(const Subject&) const = default;
};

struct Entry {
    Kind kind = Kind::Host;
    Subject subject;            // for an Advertisement or Notification, only `handle` is set
    std::int64_t number = 0;    // dBm of an Advertisement, bytes of a Notification, or the Result
    std::int64_t duration = 0;  // ms that a Result states
    std::string_view words;     // an Advertisement's name, or a Failure's text after "Exception: "
    std::int32_t stamp = 0;     // ms since midnight
    std::int64_t time = 0;      // ms since the start of the log's first day
    std::uint64_t line = 0;
};

// Returns an entry of the kind Host if the format is unknown.
Entry ReadEntry(std::string_view text);

// Returns whether the text is an advertisement whose name continues in the next line.
bool HasOpenName(std::string_view text);

}  // namespace orv::log
