#include "orv/log/observer.h"

#include <algorithm>
#include <utility>

namespace orv::log {

namespace {

// A scan is called silent after this, or after ten of its mean intervals where that is longer.
constexpr std::int64_t Silence = 3000;

// Events under way when a scan or a link ended still arrive for so long.
constexpr std::int64_t Trailing = 1000;

bool HasControl(std::string_view name) {
    return std::any_of(name.begin(), name.end(), [](char character) {
        return static_cast<unsigned char>(character) < ' ' || character == 0x7F;
    });
}

void PlaceAt(Note& note, const Entry& entry) {
    note.stamp = entry.stamp;
    note.time = entry.time;
    note.line = entry.line;
}

// A note that stands for many entries is placed at the first.
void CountAt(Note& note, const Entry& entry) {
    if (note.count++ == 0) {
        PlaceAt(note, entry);
    }
}

}  // namespace

Observer::Observer(std::function<void(const Note&)> noteSink) : onNote(std::move(noteSink)) {}

void Observer::Add(const Entry& entry) {
    latest = std::max(latest, entry.time);
    switch (entry.kind) {
        case Kind::Call:
            AddTrace(entry);
            break;
        case Kind::Advertisement:
            AddAdvertisement(entry);
            break;
        case Kind::Notification:
            AddNotification(entry);
            break;
        default:
            break;
    }
}

void Observer::AddTrace(const Entry& entry) {
    const Function function = entry.subject.function;
    if (function == Function::Start) {
        if (scans.empty()) {
            heard = entry;
            scanSince = entry.time;
            heardCount = 0;
        }
        scans.insert(entry.subject.handle);
        anyScan = true;
    } else if (function == Function::Stop) {
        StopScan(entry.subject.handle, entry.time);
    } else if (function == Function::Deinitialize && scans.erase(entry.subject.handle) > 0) {
        scanEnded = entry.time;
    } else if (function == Function::Connect) {
        ReportDropped(entry.subject.handle);
        unlinked.erase(entry.subject.handle);
    }
}

void Observer::StopScan(std::uint64_t scanner, std::int64_t time) {
    if (scans.contains(scanner)) {
        ReportSilence(time);
        scans.erase(scanner);
        scanEnded = time;
    }
}

void Observer::AddAdvertisement(const Entry& entry) {
    if (HasControl(entry.words)) {
        CountAt(hostile, entry);
    }
    if (!scans.empty()) {
        ReportSilence(entry.time);
        heard = entry;
        heard.words = {};
        ++heardCount;
    } else if (anyScan && entry.time > scanEnded + Trailing) {
        CountAt(unasked, entry);
    }
}

void Observer::ReportSilence(std::int64_t until) {
    const std::int64_t silent = until - heard.time;
    const std::int64_t mean = heardCount > 0 ? (heard.time - scanSince) / heardCount : 0;
    if (silent <= std::max(Silence, 10 * mean)) {
        return;
    }
    Note note{heardCount > 0 ? NoteKind::AdvertisementsStopped : NoteKind::NothingHeard};
    PlaceAt(note, heard);
    note.number = silent;
    onNote(note);
}

void Observer::AddNotification(const Entry& entry) {
    const auto found = unlinked.find(entry.subject.handle);
    if (found == unlinked.end()) {
        return;
    }
    CountAt(found->second, entry);
    found->second.number += entry.number;
}

void Observer::ReportDropped(std::uint64_t address) {
    const auto found = unlinked.find(address);
    if (found != unlinked.end() && found->second.count > 0) {
        onNote(found->second);
    }
}

void Observer::AddCall(const Call& call) {
    const std::uint64_t handle = call.subject.handle;
    if (call.subject.function == Function::Start && call.result == -1) {
        scans.erase(handle);
    }
    // Without a result line they may have come after it had returned.
    if (call.subject.function == Function::Connect && call.notifications > 0 && call.resultLogged &&
        call.presence != Presence::Present) {
        Note note{NoteKind::DroppedWhileConnecting};
        note.stamp = call.stamp;
        note.time = call.start;
        note.line = call.line;
        note.address = handle;
        note.count = call.notifications;
        note.number = call.notifiedBytes;
        onNote(note);
    }
    // A second link of the address, if there was one, goes on receiving.
    if (call.subject.function == Function::Disconnect && call.result == 0 && call.lastLink) {
        Note note{NoteKind::DroppedWithoutLink};
        note.address = handle;
        unlinked[handle] = note;
    }
}

void Observer::End() {
    if (!scans.empty()) {
        ReportSilence(latest);
    }
    for (const auto& [address, note] : unlinked) {
        ReportDropped(address);
    }
    for (const Note& note : {unasked, hostile}) {
        if (note.count > 0) {
            onNote(note);
        }
    }
}

}  // namespace orv::log
