// The checks of orv doctor, with their assumptions and the sections that describe them.
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

// The requirement for testing a check.
enum class Need : std::uint8_t {
    Nothing,
    Address,  // an address known before the scan
    Heard,    // devices in the scan
    Link,     // a connection to the device
    Echo,     // a device that echoes what it receives
    Switch,   // somebody who can switch the radio
    Log,      // the library's log
};

struct CheckFacts {
    Check check;
    const char* id;
    const char* title;
    const char* assumed;
    const char* section;  // section of the documents
    Need need;
};

// Returns the checks in the order of the report.
std::span<const CheckFacts, CheckCount> AllChecks();
const CheckFacts& FactsOf(Check check);

// An assumption of the documents that no check can test, with the reason.
struct Unchecked {
    const char* assumed;
    const char* reason;
    const char* section;
};
std::span<const Unchecked> AllUnchecked();

}  // namespace orv::doctor
