#include "orv/log/infer/device_notes.h"

#include <algorithm>
#include <utility>

namespace orv::log {

namespace {

// Maximum time in ms from an advertisement to its scan response.
constexpr std::int64_t ResponseTime = 50;

// Maximum length in bytes of a name in a device record.
constexpr std::size_t LongestName = 29;

// Signal strength in dBm of a device that the system no longer receives.
constexpr std::int64_t NotHeard = -127;

// If more bytes than this wait for OrvDevice_Receive, a note reports it.
constexpr std::int64_t Flood = 65536;

// Maximum length in bytes of a block that every link accepts.
constexpr std::int32_t SafeBlock = 20;

// If a device sends nothing for this many ms after the host sent a block to it, the block counts as
// not answered.
constexpr std::int64_t AnswerTime = 1000;

}  // namespace

DeviceNotes::DeviceNotes(std::function<void(const Note&)> noteSink) : onNote(std::move(noteSink)) {}

void DeviceNotes::AddAdvertisement(const Entry& entry) {
    Device& device = devices[entry.subject.handle];
    if (entry.words.size() > LongestName) {
        cut.CountAt(entry);
    }
    if (entry.number == NotHeard) {
        lost.CountAt(entry);
    }
    // Ignores nameless scan responses, because they leave the device's name unchanged.
    if (entry.words.empty() && device.hasName && entry.time - device.heard > ResponseTime) {
        nameless.CountAt(entry);
    }
    device.hasName = device.hasName || !entry.words.empty();
    device.heard = entry.time;
}

void DeviceNotes::AddNotification(const Entry& entry) {
    Device& device = devices[entry.subject.handle];
    device.unanswered.count = 0;
    device.queued += device.isUnlinked ? 0 : entry.number;
    if (device.queued > Flood && !device.isFlooded) {
        device.isFlooded = true;
        Note note{NoteKind::BytesNotTaken};
        note.PlaceAt(entry);
        note.address = entry.subject.handle;
        note.number = device.queued;
        onNote(note);
    }
}

void DeviceNotes::AddTrace(const Entry& entry) {
    const Function function = entry.subject.function;
    if (function == Function::Send && entry.subject.number > SafeBlock) {
        Note& note = devices[entry.subject.handle].unanswered;
        note.CountAt(entry);
        note.address = entry.subject.handle;
        note.number =
            std::max<std::int64_t>(note.count > 1 ? note.number : 0, entry.subject.number);
    }
}

void DeviceNotes::AddCall(const Call& call) {
    const auto found = FactsOf(call.subject.function).family == Family::Link
                           ? devices.find(call.subject.handle)
                           : devices.end();
    if (found != devices.end()) {
        Learn(call, found->second);
    }
    if (call.subject.function == Function::Connect && call.result == 0 &&
        call.presence == Presence::Present) {
        Note note{NoteKind::ConnectedTwice};
        note.PlaceAt(call);
        note.address = call.subject.handle;
        onNote(note);
    }
}

void DeviceNotes::Learn(const Call& call, Device& device) {
    switch (call.subject.function) {
        case Function::Receive:
            // If the result is unknown, the call may have received all bytes.
            device.queued -= std::min<std::int64_t>(
                device.queued, call.result ? std::max(*call.result, 0) : device.queued);
            break;
        case Function::Flush:
            device.queued = 0;
            break;
        case Function::Send:
            // A failed send has causes of its own, so it does not count as unanswered.
            if (call.result == -1 && call.subject.number > SafeBlock) {
                device.unanswered.count = std::max<std::int64_t>(device.unanswered.count - 1, 0);
            }
            break;
        case Function::Connect:
            device.isUnlinked = device.isUnlinked && call.result == -1;
            break;
        default:
            device.isUnlinked = call.result == 0 && call.lastLink;
            device.queued = device.isUnlinked ? 0 : device.queued;
    }
}

void DeviceNotes::End(std::int64_t latest) {
    for (const auto& [address, device] : devices) {
        if (device.unanswered.count > 0 && latest - device.unanswered.time >= AnswerTime) {
            onNote(device.unanswered);
        }
    }
    for (const Note& note : {nameless, cut, lost}) {
        if (note.count > 0) {
            onNote(note);
        }
    }
}

}  // namespace orv::log
