// What a report shows, gathered from a whole log before it is thinned.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "orv/log/analysis.h"
#include "orv/log/cause.h"

namespace orv::log {

// Something that happened at a time: dBm, bytes, or nothing more.
struct Sample {
    std::int64_t time;
    std::int64_t value;
};

struct Span {
    std::int64_t time;
    std::int64_t length;  // ms; 0 where it is not known
    enum class State : std::uint8_t { Ok, Failed, Unknown } state;
    Subject subject;
};

struct DeviceRecord {
    std::uint64_t address = 0;
    std::string name;  // the latest that is not empty, made printable
    std::vector<Sample> signal;
    std::int64_t connects = 0, failedCalls = 0;
    std::int64_t bytesReceived = 0, bytesSent = 0;
    std::int64_t first = 0, last = 0;
};

// Calls that failed alike: the same call for the same reasons.
struct FailureGroup {
    Call example;  // the first of them
    Suspects suspects;
    std::int64_t count = 0;
    std::vector<Sample> firstFew;  // time, and the stamp as value
};

class ReportCollector : public Listener {
  public:
    void OnEntry(const Entry& entry) override;
    void OnCall(const Call& call) override;
    void OnNote(const Note& note) override { notes.push_back(note); }

    std::vector<Span> calls[3];  // by Family
    std::vector<Sample> advertisements, notifications, failures, sent;
    std::unordered_map<std::uint64_t, DeviceRecord> devices;
    std::map<std::string, FailureGroup> failureGroups;
    std::vector<Note> notes;

  private:
    DeviceRecord& DeviceAt(std::uint64_t address, std::int64_t time);
    void AddFailure(const Call& call);
};

}  // namespace orv::log
