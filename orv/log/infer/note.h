// Observations in a log that belong to no single call.
#pragma once

#include <cstdint>

#include "orv/log/infer/call.h"

namespace orv::log {

enum class NoteKind : std::uint8_t {
    CallbackFailed,          // a failure line was written while no call ran
    DroppedWhileConnecting,  // notifications arrived before connect returned
    DroppedWithoutLink,
    NothingHeard,
    AdvertisementsStopped,
    HeardWithoutScan,
    StampsJumped,
    StrayLines,
    LastLineCut,
    ResultsWithoutCall,
    HostileNames,
    NamelessAdvertisements,  // a named device sent advertisements without its name
    NamesCut,                // names are too long for a device record
    NoLongerHeard,           // an advertisement had a signal strength of -127
    ConnectedTwice,          // connect opened a link while an older one existed
    BytesNotTaken,           // the host left many notified bytes in the queue
    BlocksUnanswered,        // the device sent nothing after long blocks
};

constexpr int NoteKindCount = 17;

struct Note {
    NoteKind kind;
    std::int32_t stamp = 0;  // time stamp of the first log line that the note reports
    std::int64_t time = 0;
    std::uint64_t line = 0;     // 0 if the note applies to the whole log
    std::uint64_t address = 0;  // 0 if the note applies to no device
    std::int64_t count = 0;     // number of notifications, lines or blocks
    std::int64_t number = 0;    // bytes or ms, depending on `kind`

    void PlaceAt(const Entry& entry) {
        stamp = entry.stamp;
        time = entry.time;
        line = entry.line;
    }
    void PlaceAt(const Call& call) {
        stamp = call.stamp;
        time = call.start;
        line = call.line;
    }
    void CountAt(const Entry& entry) {
        if (count++ == 0) {
            PlaceAt(entry);
        }
    }
};

}  // namespace orv::log
