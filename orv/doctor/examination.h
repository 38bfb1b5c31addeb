// A run of orv doctor: the library, the device, and the data that the steps share.
#pragma once

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orv/doctor/calls.h"
#include "orv/doctor/findings.h"

namespace orv::doctor {

// Threads share the ownership, because a hanging call may outlive the run.
struct Examination : std::enable_shared_from_this<Examination> {
    explicit Examination(Library loaded);

    // Returns the text for a device in the report, without address and name if `isAnonymous`.
    std::string Named(const DiscoveredDevice& heard) const;
    std::uintmax_t LogSize() const;
    // Returns why no link can be opened now, or an empty string.
    std::string WhyNoLink() const;
    std::string WhyNotTested(Need need) const;

    Library library;
    const Surroundings surroundings;
    Calls calls;
    Findings findings;

    bool isAnonymous = false;
    std::optional<BluetoothAddress> device;
    std::string wantedName;          // name of the device, if no address was given
    std::string whyNoLog;            // empty if the log is on
    std::string whyNoEcho;           // empty if blocks may be sent and the device echoes them
    std::string whyNoRadio;          // empty if a radio is on
    bool isHeard = false;            // the scan has listed the device
    bool isRejectedUnheard = false;  // a connect was rejected before the scan
    bool isLost = false;             // the device is no longer reachable
    bool closeHangs = false;         // a disconnect hangs, so no link can be used
    // True while ScopedLink waits for a disconnect, and for the rest of the run if the disconnect
    // hangs. Meanwhile, only ScopedLink decides whether the disconnect hangs. Several threads use
    // this.
    std::atomic<bool> isClosing = false;
    std::vector<std::int64_t> connectMs;  // durations of the successful connects
};

// Each step makes some checks and skips those that are impossible.
void CheckMachine(Examination& run);
void CheckConnectBeforeScan(Examination& run);
void CheckScan(Examination& run);
void CheckReconnect(Examination& run);
void CheckEcho(Examination& run);
void CheckSecondLink(Examination& run);
void CheckDisconnecting(Examination& run);
void CheckRadioSwitch(Examination& run);
void CheckThreads(Examination& run);
void CheckTimes(Examination& run);
void CheckLog(Examination& run);

}  // namespace orv::doctor
