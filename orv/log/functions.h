// The library's functions as its log names them.
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

// What a trace line holds behind the name.
enum class Traces : std::uint8_t { Nothing, Scanner, ScannerAndNumber, Address, AddressAndNumber };

struct FunctionFacts {
    std::string_view name;
    Family family;
    Traces traces;
    int waits;       // of at most 2000 ms each
    bool holdsLock;  // of its family while it waits, so that others of the family wait for it
};

const FunctionFacts& FactsOf(Function function);

std::optional<Function> FindFunction(std::string_view name);

}  // namespace orv::log
