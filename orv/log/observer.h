// Watches a log's advertisements and notifications for what its calls do not tell.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <unordered_set>

#include "orv/log/call.h"
#include "orv/log/note.h"

namespace orv::log {

class Observer {
  public:
    explicit Observer(std::function<void(const Note&)> noteSink);

    void Add(const Entry& entry);
    void AddCall(const Call& call);  // that has ended
    void End();

  private:
    void AddTrace(const Entry& entry);
    void AddAdvertisement(const Entry& entry);
    void AddNotification(const Entry& entry);
    void ReportSilence(std::int64_t until);
    void ReportDropped(std::uint64_t address);
    void StopScan(std::uint64_t scanner, std::int64_t time);

    std::function<void(const Note&)> onNote;
    std::unordered_set<std::uint64_t> scans;  // started and not stopped, by their scannerId
    bool anyScan = false;
    std::int64_t latest = 0;

    // Of the scan that is on: when the latest advertisement, or its start, was.
    Entry heard;
    std::int64_t scanSince = 0;
    std::int64_t heardCount = 0;

    std::int64_t scanEnded = 0;
    Note unasked{NoteKind::HeardWithoutScan};
    Note hostile{NoteKind::HostileNames};
    std::map<std::uint64_t, Note> unlinked;  // of disconnected addresses, with a count
};

}  // namespace orv::log
