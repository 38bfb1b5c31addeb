#include "orv/log/note.h"

#include <iterator>

#include "orv/log/words.h"

namespace orv::log {

namespace {

constexpr NoteTexts Texts[] = {
    {"callbackFailed",
     "an advertisement or a notification could not be read; its bytes are lost, the next ones "
     "arrive",
     "if it comes often, ask BluetoothAvailable and connect anew"},
    {"droppedWhileConnecting",
     "before connect returns there is no link that could queue them, unless an older one exists",
     "let the device wait with its first bytes until the host has sent some"},
    {"droppedWithoutLink", "the address was disconnected, and what still arrives is dropped",
     "take the bytes before disconnecting"},
    {"nothingHeard", "the radio is off, the start failed, or no device is in reach",
     "ask BluetoothAvailable: a start succeeds with the radio off, too"},
    {"advertisementsStopped",
     "the radio was switched off or went away, or the devices fell silent or out of reach",
     "ask BluetoothAvailable; when it is 0 again, stop and start the scan"},
    {"heardWithoutScan",
     "a scanner was deinitialized without being stopped, so the radio goes on scanning",
     "call OrvScanner_Stop before OrvScanner_Deinitialize"},
    {"stampsJumped",
     "the clock was set, or a line is not the library's: a device's name can hold a forged one",
     "do not trust durations across the jump"},
    {"strayLines",
     "they do not begin with a time stamp; the file was damaged, or is not the log alone",
     "send the log as the file that the library wrote"},
    {"lastLineCut", "the file was copied while the line was written, or the disk is full",
     "read the log again"},
    {"resultsWithoutCall", "the log was switched on while these calls ran", ""},
    {"hostileNames",
     "names with control characters are shown with these made visible; what looks like further "
     "log lines may be part of a name",
     "do not print names without escaping them"},
};
static_assert(std::size(Texts) == NoteKindCount);

}  // namespace

const NoteTexts& TextsOf(NoteKind kind) {
    return Texts[static_cast<std::size_t>(kind)];
}

std::string FactsOf(const Note& note) {
    const std::string notifications = Count(note.count, "notification") + " (" +
                                      Count(note.number, "byte") + ") from " +
                                      AddressWords(note.address);
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
            return Count(note.count, "advertisement") + " arrived though no scan was on";
        case NoteKind::StampsJumped:
            return "the time stamps jumped back " + Count(note.count, "time");
        case NoteKind::StrayLines:
            return Count(note.count, "line") + " passed over";
        case NoteKind::LastLineCut:
            return "the last line is not complete: passed over";
        case NoteKind::ResultsWithoutCall:
            return Count(note.count, "result line") + " without a call";
        case NoteKind::HostileNames:
            return Count(note.count, "advertisement") + " with control characters in the name";
    }
    return {};
}

}  // namespace orv::log
