// Finds problems that belong to no call, such as dropped notifications or silent scans.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <unordered_set>

#include "orv/log/infer/call.h"
#include "orv/log/infer/device_notes.h"
#include "orv/log/infer/note.h"

namespace orv::log {

class NoteFinder {
  public:
    explicit NoteFinder(std::function<void(const Note&)> noteSink);

    void Add(const Entry& entry);
    void AddCall(const Call& call);  // `call` must have ended
    void End();

  private:
    void AddTrace(const Entry& entry);
    void AddAdvertisement(const Entry& entry);
    void AddNotification(const Entry& entry);
    void ReportSilence(std::int64_t until);
    void ReportDropped(std::uint64_t address);
    void StopScan(std::uint64_t scanner, std::int64_t time);

    std::function<void(const Note&)> onNote;
    std::unordered_set<std::uint64_t> scans;  // scannerIds of running scans
    bool anyScan = false;
    std::int64_t latest = 0;

    // The scan's latest advertisement, or its Start call if none has arrived yet.
    Entry heard;
    std::int64_t scanSince = 0;
    std::int64_t heardCount = 0;

    std::int64_t scanEnded = 0;
    Note unasked{NoteKind::HeardWithoutScan};
    Note hostile{NoteKind::HostileNames};
    std::map<std::uint64_t, Note> unlinked;  // notifications after a disconnect, by address
    DeviceNotes devices;
};

}  // namespace orv::log
