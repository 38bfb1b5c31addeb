// What a log shows beside its calls.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orv::log {

enum class NoteKind : std::uint8_t {
    CallbackFailed,          // a failure line while no call ran
    DroppedWhileConnecting,  // notifications that came before connect had returned
    DroppedWithoutLink,      // notifications for an address that has no link
    NothingHeard,            // a scan without a single advertisement
    AdvertisementsStopped,   // a scan that went silent
    HeardWithoutScan,        // a scan that nobody has stopped
    StampsJumped,
    StrayLines,
    LastLineCut,
    ResultsWithoutCall,
    HostileNames,
};

constexpr int NoteKindCount = 11;

struct Note {
    NoteKind kind;
    std::int32_t stamp = 0;  // where it begins
    std::int64_t time = 0;
    std::uint64_t line = 0;     // 0: of the whole log
    std::uint64_t address = 0;  // 0: of no device
    std::int64_t count = 0;     // notifications, lines, ...
    std::int64_t number = 0;    // bytes, or milliseconds
};

struct NoteTexts {
    std::string_view id;
    std::string_view means;  // what may be behind it
    std::string_view advice;
};

const NoteTexts& TextsOf(NoteKind kind);

// The note's facts as a sentence without its end.
std::string FactsOf(const Note& note);

}  // namespace orv::log
