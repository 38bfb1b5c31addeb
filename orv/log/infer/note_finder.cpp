#include "orv/log/infer/note_finder.h"

#include <algorithm>
#include <utility>

namespace orv::log {

namespace {

// A note reports that a scan is silent if no advertisement arrives for this many ms and for ten
// times their mean interval.
constexpr std::int64_t Silence = 3000;

// Advertisements may still arrive for this many ms after the end of a scan.
constexpr std::int64_t Trailing = 1000;

bool HasControl(std::string_view name) {
    return std::any_of(name.begin(), name.end(), [](char character) {
        return static_cast<unsigned char>(character) < ' ' || character == 0x7F;
    });
}

}  // namespace

NoteFinder::NoteFinder(std::function<void(const Note&)> noteSink)
    : onNote(std::move(noteSink)), devices(onNote) {}

void NoteFinder::Add(const Entry& entry) {
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

void NoteFinder::AddTrace(const Entry& entry) {
    devices.AddTrace(entry);
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

void NoteFinder::StopScan(std::uint64_t scanner, std::int64_t time) {
    if (scans.contains(scanner)) {
        ReportSilence(time);
        scans.erase(scanner);
        scanEnded = time;
    }
}

void NoteFinder::AddAdvertisement(const Entry& entry) {
    devices.AddAdvertisement(entry);
    if (HasControl(entry.words)) {
        hostile.CountAt(entry);
    }
    if (!scans.empty()) {
        ReportSilence(entry.time);
        heard = entry;
        heard.words = {};
        ++heardCount;
    } else if (anyScan && entry.time > scanEnded + Trailing) {
        unasked.CountAt(entry);
    }
}

void NoteFinder::ReportSilence(std::int64_t until) {
    const std::int64_t silent = until - heard.time;
    const std::int64_t mean = heardCount > 0 ? (heard.time - scanSince) / heardCount : 0;
    if (silent <= std::max(Silence, 10 * mean)) {
        return;
    }
    Note note{heardCount > 0 ? NoteKind::AdvertisementsStopped : NoteKind::NothingHeard};
    note.PlaceAt(heard);
    note.number = silent;
    onNote(note);
}

void NoteFinder::AddNotification(const Entry& entry) {
    devices.AddNotification(entry);
    const auto found = unlinked.find(entry.subject.handle);
    if (found == unlinked.end()) {
        return;
    }
    found->second.CountAt(entry);
    found->second.number += entry.number;
}

void NoteFinder::ReportDropped(std::uint64_t address) {
    const auto found = unlinked.find(address);
    if (found != unlinked.end() && found->second.count > 0) {
        onNote(found->second);
    }
}

void NoteFinder::AddCall(const Call& call) {
    devices.AddCall(call);
    const std::uint64_t handle = call.subject.handle;
    if (call.subject.function == Function::Start && call.result == -1) {
        scans.erase(handle);
    }
    // Without a result line, the notifications may have arrived after connect returned.
    if (call.subject.function == Function::Connect && call.notifications > 0 && call.resultLogged &&
        call.presence != Presence::Present) {
        Note note{NoteKind::DroppedWhileConnecting};
        note.PlaceAt(call);
        note.address = handle;
        note.count = call.notifications;
        note.number = call.notifiedBytes;
        onNote(note);
    }
    // If the address has a second link, that link still receives notifications.
    if (call.subject.function == Function::Disconnect && call.result == 0 && call.lastLink) {
        Note note{NoteKind::DroppedWithoutLink};
        note.address = handle;
        unlinked[handle] = note;
    }
}

void NoteFinder::End() {
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
    devices.End(latest);
}

}  // namespace orv::log
