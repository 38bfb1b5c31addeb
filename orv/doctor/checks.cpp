#include "orv/doctor/checks.h"

#include "orv/log/read/rows.h"

namespace orv::doctor {

namespace {

#define TRUTHS "docs/windows_truths.md#"
#define OFFICIAL "docs/windows_truths.md#what-the-official-documentation-says"

constexpr CheckFacts Checks[CheckCount] = {
    {Check::System, "system", "System version",
     "The system is Windows 10 version 1703 or later, or Linux.", "docs/windows.md#requirements",
     Need::Nothing},
    {Check::LibraryFile, "library_file", "Library file", "The library has the version of this orv.",
     "docs/windows.md#requirements", Need::Nothing},
    {Check::RadioOn, "radio_on", "Availability with the radio on",
     "BluetoothAvailable returns 0 while a Bluetooth radio is on.",
     TRUTHS "the-radio-is-switched-off-during-a-scan", Need::Nothing},
    {Check::KnownBeforeScan, "known_before_scan", "Connect before a scan",
     "The system knows the device although this run has not scanned.",
     TRUTHS "a-device-never-seen-since-the-machine-was-started", Need::Address},
    {Check::NotInUse, "not_in_use", "Device in use elsewhere",
     "No connect is rejected at once: no other program holds the device's service.",
     TRUTHS "another-program-holds-the-service", Need::Link},
    {Check::ConnectInTime, "connect_in_time", "Connect within the time limit",
     "No connect to a device that is in range ends by the time limit of 2000 ms.",
     TRUTHS "the-library-times-out-before-the-system", Need::Link},
    {Check::EarlyNotifications, "early_notifications", "Notifications during connect",
     "No notification arrives before connect has returned.",
     TRUTHS "the-first-notifications-come-before-connect-has-returned", Need::Link},
    {Check::QuietDevice, "quiet_device", "Bytes that nobody asked for",
     "A device to which nothing was sent sends less than 10,000 bytes a second.",
     TRUTHS "notifications-that-the-host-does-not-receive", Need::Link},
    {Check::CloseReturns, "close_returns", "Disconnect returns",
     "Every disconnect returns; the calls that close the service and the device do not hang.",
     TRUTHS "closing-never-returns", Need::Link},
    {Check::FirstHeard, "first_heard", "Time to the first device",
     "A device that advertises is listed within 10 s of the start of a scan.",
     "docs/orv.md#scanning", Need::Heard},
    {Check::ScanLasts, "scan_lasts", "The scan lasts",
     "The radio stays on and the scan goes on until it is stopped.",
     TRUTHS "the-radio-is-switched-off-during-a-scan", Need::Heard},
    {Check::ScanValues, "scan_values", "Values in scan responses",
     "Scan responses arrive and set values, and a value that is set stays set.",
     TRUTHS "the-name-is-in-the-scan-response-only", Need::Heard},
    {Check::NameStays, "name_stays", "Names stay",
     "A device that was listed with its name keeps a name.",
     TRUTHS "the-name-is-in-the-scan-response-only", Need::Heard},
    {Check::NameWhole, "name_whole", "Whole characters in names",
     "No name is cut in the middle of a character.",
     TRUTHS "a-name-that-is-cut-in-the-middle-of-a-character", Need::Heard},
    {Check::NameHarmless, "name_harmless", "Printable names",
     "Names hold printable characters only.", TRUTHS "names-with-harmful-characters", Need::Heard},
    {Check::Signal, "signal", "Signal strengths", "Signal strengths are between -126 and 20 dBm.",
     TRUTHS "a-signal-strength-of--127", Need::Heard},
    {Check::Connect, "connect", "Connect and reconnect",
     "The device can be connected, disconnected and connected again, several times.", OFFICIAL,
     Need::Link},
    {Check::DeviceStays, "device_stays", "The device stays",
     "A device that was heard or connected can be reached until the end.",
     TRUTHS "a-device-that-disappears", Need::Link},
    {Check::WriteAnswered, "write_answered", "Sends within the time limit",
     "The system reports each write as finished within 2000 ms.",
     TRUTHS "a-write-that-times-out-but-arrives", Need::Echo},
    {Check::Notifications, "notifications", "Notifications",
     "Notifications arrive after connect, in order, with the bytes that were sent.", OFFICIAL,
     Need::Echo},
    {Check::WriteKind, "write_kind", "Kind of write",
     "A write is finished when the device has answered: it takes half the shortest connection "
     "interval (3.75 ms) or more on average.",
     OFFICIAL, Need::Echo},
    {Check::BlockSize, "block_size", "Largest block",
     "Blocks of up to 512 bytes arrive in one send.",
     TRUTHS "a-block-that-is-too-large-for-the-link", Need::Echo},
    {Check::Throughput, "throughput", "Throughput",
     "4096 bytes arrive and come back unchanged at 100 bytes a second or more.",
     "docs/performance.md", Need::Echo},
    {Check::SecondLink, "second_link", "Two links to one address",
     "Both links get each notification, and the disconnect of the older leaves the other working.",
     TRUTHS "two-links-to-one-address", Need::Echo},
    {Check::LateNotifications, "late_notifications", "Notifications after disconnect",
     "No notification arrives later than 20 ms after disconnect has returned.", OFFICIAL,
     Need::Echo},
    {Check::SendWhileDisconnecting, "send_while_disconnecting", "Send during a disconnect",
     "A send at the same time as a disconnect returns within both time limits, and the device can "
     "be connected again.",
     OFFICIAL, Need::Echo},
    {Check::RadioOff, "radio_off", "Availability with the radio off",
     "BluetoothAvailable returns -1 while the radio is off, and 0 when it is on again.",
     TRUTHS "the-radio-is-switched-off-during-a-scan", Need::Switch},
    {Check::RadioLink, "radio_link", "Links while the radio is off",
     "Links and their operations go on while the radio is off.",
     TRUTHS "the-radio-is-switched-off-during-a-scan", Need::Switch},
    {Check::RadioScan, "radio_scan", "Scans after the radio was off",
     "Neither a scan that the radio has ended nor one that was started while the radio was off "
     "hears "
     "anything again. A scan that is started afterwards does.",
     TRUTHS "the-radio-is-switched-off-during-a-scan", Need::Switch},
    {Check::AnyThread, "any_thread", "Calls on any thread",
     "A thread that was not prepared, and on Windows one in a single-threaded apartment, gets the "
     "same answers.",
     TRUTHS "a-host-thread-in-a-single-threaded-apartment", Need::Nothing},
    {Check::TimeBounds, "time_bounds", "Time limits",
     "Each call returns within the time that the header states; 1000 ms are added for the system's "
     "calls that have no limit.",
     "docs/reliability.md#time-limits", Need::Nothing},
    {Check::LogLines, "log_lines", "Lines of the log",
     "The log has one line for each call, with the call's arguments, and no failure lines.",
     "docs/reading_logs.md", Need::Log},
};

static_assert(log::HasEachRow<&CheckFacts::check>(Checks));

constexpr Unchecked NotChecked[] = {
    {"Events are raised on threads of the system, several at once.",
     "The exports queue what arrives; they do not show the thread.", OFFICIAL},
    {"Calls on a closed service fail.",
     "The exports never call a service after they have closed it, unless closing the device fails, "
     "which cannot be arranged.",
     OFFICIAL},
    {"Pending operations complete when the device is closed.",
     "Sends and disconnects wait for each other, so no write is pending when a device is closed.",
     OFFICIAL},
    {"A radio that was plugged in after the first question is not listed.",
     "It needs an adapter that can be plugged in, and a program that has asked before. Start "
     "orv doctor, plug the adapter in, and compare with a second run.",
     OFFICIAL},
    {"Extended advertisements are not received.",
     "It needs a device that sends nothing else, and the exports do not show the kind of packet.",
     OFFICIAL},
    {"When the system regards a device as no longer in range, and whether the event of -127 "
     "carries a name.",
     "It takes a device that is carried away during the scan; the check of signal strengths "
     "reports "
     "it if it happens.",
     TRUTHS "a-signal-strength-of--127"},
    {"Which step the system denies while another program holds the service.",
     "Connect returns -1 for each of them.", TRUTHS "another-program-holds-the-service"},
    {"The system tries for 7 s to reach a device, with one operation at a time.",
     "The exports wait for 2000 ms. If a connect times out, connect_in_time reports after which "
     "time the device could be connected.",
     TRUTHS "the-library-times-out-before-the-system"},
    {"A window does not respond while its thread waits in a call.", "orv has no window.",
     TRUTHS "a-host-thread-in-a-single-threaded-apartment"},
    {"Paths of more than 259 bytes, and paths outside the ANSI code page, keep the log off.",
     "The library would have to be copied to such a path.",
     "docs/windows.md#behaviour-in-a-process"},
    {"A host with package identity has to declare the bluetooth capability.",
     "orv is not packaged.", "docs/windows.md#requirements"},
    {"A thread gets window messages in a call into the system.",
     "orv has no window, and no handler that could call the library.",
     "docs/windows.md#behaviour-in-a-process"},
    {"An empty write tests a link, and no byte reaches the device.",
     "The exports do not show what reaches the device. orv bridge tests links in this way.",
     "docs/bridge.md#the-link"},
};

}  // namespace

std::span<const CheckFacts, CheckCount> AllChecks() {
    return Checks;
}

const CheckFacts& FactsOf(Check check) {
    return log::RowOf<&CheckFacts::check>(Checks, check);
}

std::span<const Unchecked> AllUnchecked() {
    return NotChecked;
}

}  // namespace orv::doctor
