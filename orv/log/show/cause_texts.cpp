#include "orv/log/show/cause_texts.h"

#include <iterator>

#include "orv/address.h"
#include "orv/log/read/rows.h"
#include "orv/log/show/format.h"
#include "orv/terminal/printable.h"

namespace orv::log {

namespace {

constexpr CauseTexts CauseRows[] = {
    {Cause::LimitPassed, "limitPassed", "no answer within the limit of 2000 ms",
     "a device that answers a later call was only slow",
     "move closer or wake the device, then try again"},
    {Cause::SystemBusy, "systemBusy", "the system was still working on an earlier connect",
     "an earlier connect to the address timed out less than 7 s before",
     "try again 7 s after the first try, not sooner"},
    {Cause::Unacknowledged, "unacknowledged",
     "the device accepted the block and acknowledged it too late", "the device reacts to the block",
     "ask the device what has arrived before you send the block again"},
    {Cause::InUse, "inUse", "the device is in use by another program",
     "the device is heard well, and connect is rejected at once, again and again",
     "close other programs that use the device, also an earlier run of the host"},
    {Cause::Refused, "refused", "the device or the system rejected it",
     "the device is out of range, or the user or the system denies access",
     "check range, pairing and the system's privacy settings for Bluetooth"},
    {Cause::Ended, "ended", "the system ended the operation without an answer",
     "it comes at once again while the radio is off or restarting",
     "call BluetoothAvailable, then try again"},
    {Cause::UnknownDevice, "unknownDevice", "the system knows no device of this address",
     "OnAdvertisementReceived lines with this address show that it is near",
     "scan until the device has been heard, then connect"},
    {Cause::NotOffered, "notOffered",
     "the device does not offer the family's service or characteristic",
     "the same device fails in the same way each time",
     "check that it is a device of the family and what firmware it runs"},
    {Cause::NoAdapter, "noAdapter", "the machine has no Bluetooth adapter",
     "the system's device list shows none, and every later call fails alike",
     "plug in or enable an adapter"},
    {Cause::NoRadioOn, "noRadioOn", "no Bluetooth radio is switched on",
     "the system's Bluetooth switch is off", "ask the user to switch Bluetooth on"},
    {Cause::NoLink, "noLink", "the address has no link",
     "OrvDevice_Flush is -1 for the address, too",
     "connect first; after a failed call, connect again before the next one"},
    {Cause::NoSession, "noSession", "no scanner has this id",
     "OrvScanner_GetDeviceCount is -1 for the id, too",
     "use the id that OrvScanner_Initialize returned, until it is deinitialized"},
    {Cause::IndexOutOfRange, "indexOutOfRange", "the list is not that long",
     "OrvScanner_GetDeviceCount returns its length; a start empties it",
     "ask for 0 to OrvScanner_GetDeviceCount - 1"},
    {Cause::NegativeLength, "negativeLength", "the length is negative", "the trace line shows it",
     "pass the number of bytes"},
    {Cause::NullPointer, "nullPointer", "a null pointer was passed",
     "OrvDevice_Flush or OrvScanner_GetDeviceCount succeeds for the same handle",
     "pass memory of the size that the header asks for"},
    {Cause::SystemFailure, "systemFailure", "a call into the system failed",
     "BluetoothAvailable fails as well when Bluetooth is off or its adapter was removed",
     "call BluetoothAvailable, then try again"},
    {Cause::OutOfMemory, "outOfMemory", "memory ran out", "the failure line says bad allocation",
     "read or flush links that receive; free memory"},
    {Cause::StandardFailure, "standardFailure", "the library reached an internal limit",
     "the failure line contains its text", "send the log to the library's developers"},
    {Cause::ClosingFailed, "closingFailed",
     "the connect was refused without a line, and closing it then failed",
     "the failure line comes as late as the refusal",
     "handle it as a rejected connect; call BluetoothAvailable"},
    {Cause::ClosingSlow, "closingSlow", "closing what was opened took long; it has no time limit",
     "OrvDevice_Disconnect takes long as well", "call from a thread that may wait"},
    {Cause::ClosingHangs, "closingHangs", "closing the device or its service does not return",
     "every other OrvDevice_ call waits as well", "restart the program: no call can end the wait"},
    {Cause::WaitedForOthers, "waitedForOthers", "another call held the lock",
     "a send, disconnect, start or stop of another thread overlaps",
     "let one thread send at a time and expect up to 2000 ms for each"},
    {Cause::SystemSlow, "systemSlow", "a call into the system took long; it has no time limit",
     "the next call of the same kind is quick again", "call from a thread that may wait"},
    {Cause::SlowAnswers, "slowAnswers", "the answers came late, but within their limits",
     "a quicker call later shows that the device or the radio was busy",
     "call from a thread that may wait"},
    {Cause::LineMissing, "lineMissing", "a failure whose line is not in the log",
     "the log was switched off or emptied meanwhile, or the disk is full",
     "keep the log on until the host ends"},
    {Cause::StillRunning, "stillRunning", "the log ends before the call does",
     "later lines, or the host's own log, show whether it ended",
     "check whether the process hung or crashed in this call"},
};
static_assert(std::size(CauseRows) == CauseCount && HasEachRow<&CauseTexts::cause>(CauseRows));

constexpr std::string_view AvailableSteps[] = {"looking up the adapter", "listing the radios"};
constexpr std::string_view ConnectSteps[] = {"looking up the device", "looking up the service",
                                             "asking for access", "looking up the characteristic",
                                             "switching notifications on"};

}  // namespace

const CauseTexts& TextsOf(Cause cause) {
    return RowOf<&CauseTexts::cause>(CauseRows, cause);
}

std::string_view StepName(Function function, int step) {
    switch (function) {
        case Function::Available:
            return AvailableSteps[step];
        case Function::Connect:
            return ConnectSteps[step];
        case Function::Disconnect:
            return "switching notifications off";
        default:
            return "writing";
    }
}

std::string StepWords(Function function, Steps steps) {
    const int count = FactsOf(function).waits;
    const auto from = [count](int first) { return (1 << count) - (1 << first); };
    if (count > 2 && steps == from(0)) {
        return "in any of its steps";
    }
    std::string words;
    for (int step = 0; step < count; ++step) {
        if ((steps >> step & 1) == 0) {
            continue;
        }
        const std::string name(StepName(function, step));
        if (steps == from(step) && count - step > 2) {
            return words.append("while ").append(name).append(" or in a later step");
        }
        const bool last = steps >> (step + 1) == 0;
        words += words.empty() ? "while " : last ? " or " : ", ";
        words += name;
    }
    return words;
}

namespace {

constexpr NoteTexts NoteRows[] = {
    {NoteKind::CallbackFailed, "callbackFailed",
     "an advertisement or a notification could not be read; its bytes are lost, the next ones "
     "arrive",
     "if it comes often, call BluetoothAvailable and connect anew"},
    {NoteKind::DroppedWhileConnecting, "droppedWhileConnecting",
     "before connect returns there is no link that could queue them, unless an older one exists",
     "let the device wait with its first bytes until the host has sent some"},
    {NoteKind::DroppedWithoutLink, "droppedWithoutLink",
     "the address was disconnected, and what still arrives is dropped",
     "receive the bytes before you disconnect"},
    {NoteKind::NothingHeard, "nothingHeard",
     "the radio is off, the start failed, or no device is in range",
     "call BluetoothAvailable: a start succeeds with the radio off, too"},
    {NoteKind::AdvertisementsStopped, "advertisementsStopped",
     "the radio was switched off or removed, or the devices stopped sending or are out of range",
     "call BluetoothAvailable; when it is 0 again, stop and start the scan"},
    {NoteKind::HeardWithoutScan, "heardWithoutScan",
     "a scanner was deinitialized without being stopped, so the radio goes on scanning",
     "call OrvScanner_Stop before OrvScanner_Deinitialize"},
    {NoteKind::StampsJumped, "stampsJumped",
     "the clock was set, or a line is not the library's: a device's name can hold a forged one",
     "do not trust durations across the jump"},
    {NoteKind::StrayLines, "strayLines",
     "they do not begin with a time stamp; the file was damaged, or is not the log alone",
     "send the log as the file that the library wrote"},
    {NoteKind::LastLineCut, "lastLineCut",
     "the file was copied while the line was written, or the disk is full", "read the log again"},
    {NoteKind::ResultsWithoutCall, "resultsWithoutCall",
     "the log was switched on while these calls ran", ""},
    {NoteKind::HostileNames, "hostileNames",
     "names with control characters are shown with these made visible; what looks like further "
     "log lines may be part of a name",
     "do not print names without escaping them"},
    {NoteKind::NamelessAdvertisements, "namelessAdvertisements",
     "the name may be in the device's scan response only, and each advertisement empties the one "
     "in the list",
     "for each address, keep the latest name that is not empty"},
    {NoteKind::NamesCut, "namesCut",
     "a record holds the first 29 bytes only, which may end in half a character",
     "replace or drop the half character before you show the name"},
    {NoteKind::NoLongerHeard, "noLongerHeard",
     "the system has not heard the device for a while; it stays in the list",
     "leave -127 out of averages, and show the device as not heard any more"},
    {NoteKind::ConnectedTwice, "connectedTwice",
     "there are two links: each notification is queued on both and logged twice, and the newer "
     "one stays after a disconnect",
     "connect once for each disconnect; if you lost count, disconnect until -1 is returned"},
    {NoteKind::BytesNotTaken, "bytesNotTaken",
     "the library queues them without a limit, so memory grows",
     "receive several times a second, or call OrvDevice_Flush"},
    {NoteKind::BlocksUnanswered, "blocksUnanswered",
     "a block that is longer than the link accepts is lost, and OrvDevice_Send returns its length "
     "all the same; a device that never answers looks alike",
     "send blocks of at most 20 bytes, and let the device acknowledge them"},
};
static_assert(std::size(NoteRows) == NoteKindCount && HasEachRow<&NoteTexts::kind>(NoteRows));

}  // namespace

const NoteTexts& TextsOf(NoteKind kind) {
    return RowOf<&NoteTexts::kind>(NoteRows, kind);
}

std::string FactsOf(const Note& note) {
    const std::string notifications = Counted(note.count, "notification") + " (" +
                                      Counted(note.number, "byte") + ") from " +
                                      AddressText(note.address);
    const std::string seconds = std::to_string(note.number / 1000) + " s";
    switch (note.kind) {
        case NoteKind::CallbackFailed:
            return "a callback failed";
        case NoteKind::DroppedWhileConnecting:
            return notifications + " arrived before connect had returned: dropped";
        case NoteKind::DroppedWithoutLink:
            return notifications + " arrived without a link: dropped";
        case NoteKind::NothingHeard:
            return "a scan heard nothing for " + seconds;
        case NoteKind::AdvertisementsStopped:
            return "advertisements stopped for " + seconds + " during a scan";
        case NoteKind::HeardWithoutScan:
            return Counted(note.count, "advertisement") + " arrived while no scan was running";
        case NoteKind::StampsJumped:
            return "the time stamps jumped back " + Counted(note.count, "time");
        case NoteKind::StrayLines:
            return Counted(note.count, "line") + " skipped";
        case NoteKind::LastLineCut:
            return "the last line is not complete: skipped";
        case NoteKind::ResultsWithoutCall:
            return Counted(note.count, "result line") + " without a call";
        case NoteKind::HostileNames:
            return Counted(note.count, "advertisement") + " with control characters in the name";
        case NoteKind::NamelessAdvertisements:
            return Counted(note.count, "advertisement") + " of named devices came without a name";
        case NoteKind::NamesCut:
            return Counted(note.count, "advertisement") + " with a name of more than 29 bytes";
        case NoteKind::NoLongerHeard:
            return Counted(note.count, "advertisement") + " with a signal strength of -127 dBm";
        case NoteKind::ConnectedTwice:
            return "connected to " + AddressText(note.address) + " while it had a link";
        case NoteKind::BytesNotTaken:
            return Counted(note.number, "byte") + " from " + AddressText(note.address) +
                   " waited to be received";
        case NoteKind::BlocksUnanswered:
            return Counted(note.count, "block") + " of up to " + Counted(note.number, "byte") +
                   " to " + AddressText(note.address) + ", and nothing came back";
    }
    return {};
}

}  // namespace orv::log
