#include "orv/log/cause.h"

#include <iterator>

namespace orv::log {

namespace {

constexpr CauseTexts Texts[] = {
    {"limitPassed", "no answer within the limit of 2000 ms",
     "a device that answers a later call was only slow",
     "move closer or wake the device, then try again"},
    {"refused", "the answer was no",
     "the device is out of reach, or the user or the system denies access",
     "check range, pairing and the system's privacy settings for Bluetooth"},
    {"ended", "the system ended the operation without an answer",
     "it comes at once again while the radio is off or restarting",
     "ask BluetoothAvailable, then try again"},
    {"unknownDevice", "the system knows no device of this address",
     "OnAdvertisementReceived lines with this address show that it is near",
     "scan until the device has been heard, then connect"},
    {"notOffered", "the device does not offer the family's service or characteristic",
     "the same device fails in the same way each time",
     "check that it is a device of the family and what firmware it runs"},
    {"noAdapter", "the machine has no Bluetooth adapter",
     "the system's device list shows none, and every later call fails alike",
     "plug in or enable an adapter"},
    {"noRadioOn", "no Bluetooth radio is switched on", "the system's Bluetooth switch is off",
     "ask the user to switch Bluetooth on"},
    {"noLink", "the address has no link", "OrvDevice_Flush is -1 for the address, too",
     "connect first; after a failed call do not go on with the address"},
    {"noSession", "no scanner has this id", "OrvScanner_GetDeviceCount is -1 for the id, too",
     "use the id that OrvScanner_Initialize returned, until it is deinitialized"},
    {"indexOutOfRange", "the list is not that long",
     "OrvScanner_GetDeviceCount tells its length; a start empties it",
     "ask for 0 to OrvScanner_GetDeviceCount - 1"},
    {"negativeLength", "the length is negative", "the trace line shows it",
     "pass the number of bytes"},
    {"nullPointer", "a null pointer was passed",
     "OrvDevice_Flush or OrvScanner_GetDeviceCount succeeds for the same handle",
     "pass memory of the size that the header asks for"},
    {"systemFailure", "a call into the system failed",
     "BluetoothAvailable fails as well when Bluetooth itself is gone",
     "ask BluetoothAvailable, then try again"},
    {"outOfMemory", "memory ran out", "the failure line says bad allocation",
     "read or flush links that receive; free memory"},
    {"standardFailure", "the library met a limit of its own", "the failure line carries its text",
     "send the log to the library's developers"},
    {"closingFailed", "the connect was refused without a line, and closing it then failed",
     "the failure line comes as late as the refusal",
     "treat it as the refusal that it is; ask BluetoothAvailable"},
    {"closingSlow", "closing what was opened took long; it has no time limit",
     "OrvDevice_Disconnect takes long as well", "call from a thread that may wait"},
    {"waitedForOthers", "another call held the lock",
     "a send, disconnect, start or stop of another thread overlaps",
     "let one thread send at a time and expect up to 2000 ms for each"},
    {"systemSlow", "a call into the system took long; it has no time limit",
     "the next call of the same kind is quick again", "call from a thread that may wait"},
    {"slowAnswers", "the answers came late, but within their limits",
     "a quicker call later shows that the device or the radio was busy",
     "call from a thread that may wait"},
    {"lineMissing", "a failure whose line is not in the log",
     "the log was switched off or emptied meanwhile, or the disk is full",
     "keep the log on until the host ends"},
    {"stillRunning", "the log ends before the call does",
     "later lines, or the host's own account, show whether it ended",
     "look whether the process hung or died in this call"},
};
static_assert(std::size(Texts) == CauseCount);

constexpr std::string_view AvailableSteps[] = {"looking up the adapter", "listing the radios"};
constexpr std::string_view ConnectSteps[] = {"looking up the device", "looking up the service",
                                             "asking for access", "looking up the characteristic",
                                             "switching notifications on"};

}  // namespace

const CauseTexts& TextsOf(Cause cause) {
    return Texts[static_cast<std::size_t>(cause)];
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

}  // namespace orv::log
