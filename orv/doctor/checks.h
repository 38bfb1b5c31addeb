// The checks of orv doctor: what each one assumes, and where the documents describe it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace orv::doctor {

enum class Check : std::uint8_t {
    System,
    LibraryFile,
    RadioOn,
    KnownBeforeScan,
    NotInUse,
    ConnectInTime,
    EarlyNotifications,
    QuietDevice,
    CloseReturns,
    FirstHeard,
    ScanLasts,
    ScanValues,
    NameStays,
    NameWhole,
    NameHarmless,
    Signal,
    Connect,
    DeviceStays,
    WriteAnswered,
    Notifications,
    WriteKind,
    BlockSize,
    Throughput,
    SecondLink,
    LateNotifications,
    SendWhileDisconnecting,
    RadioOff,
    RadioLink,
    RadioScan,
    AnyThread,
    TimeBounds,
    LogLines,
};

constexpr std::size_t CheckCount = 32;

enum class Need : std::uint8_t {
    Nothing,
    Address,  // a device address from the user
    Heard,    // a device whose advertisement the scan received
    Link,     // a connection to the device
    Echo,     // a device that echoes what it receives
    Switch,   // a user or a simulated world that switches the radio off and on
    Log,
};

struct CheckFacts {
    Check check;
    const char* id;
    const char* title;
    const char* assumed;
    const char* section;  // file and heading in the documents
    Need need;
};

// Returns all checks in the order of the report.
std::span<const CheckFacts, CheckCount> AllChecks();
const CheckFacts& FactsOf(Check check);

// A documented assumption that no check can test, and why.
struct Unchecked {
    const char* assumed;
    const char* reason;
    const char* section;
};
std::span<const Unchecked> AllUnchecked();

}  // namespace orv::doctor
