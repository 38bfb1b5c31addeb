#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "orv/log/infer/analysis.h"
#include "orv/log/infer/causes.h"

namespace orv::log {

// An event. `value` is, for example, in dBm or bytes. It is 1 if the report only counts the events.
struct Sample {
    std::int64_t time;
    std::int64_t value;
};

struct Span {
    std::int64_t time;
    std::int64_t length;  // ms; 0 if unknown
    enum class State : std::uint8_t { Ok, Failed, Unknown } state;
    Subject subject;
};

struct ReportedDevice {
    std::uint64_t address = 0;
    std::string name;  // the latest nonempty name
    std::vector<Sample> signal;
    std::int64_t connects = 0, failedCalls = 0;
    std::int64_t bytesReceived = 0, bytesSent = 0;
    std::int64_t first = 0, last = 0;
};

// Failed calls with the same function, handle and possible causes.
struct FailureGroup {
    Call example;  // the first call
    Suspects suspects;
    std::int64_t count = 0;
    std::vector<Sample> firstFew;  // the first calls; `value` is the time stamp
};

class ReportCollector : public Listener {
  public:
    void OnEntry(const Entry& entry) override;
    void OnCall(const Call& call) override;
    void OnNote(const Note& note) override { notes.push_back(note); }

    std::vector<Span> calls[3];  // indexed by Family
    std::vector<Sample> advertisements, notifications, failures, sent;
    std::unordered_map<std::uint64_t, ReportedDevice> devices;
    std::map<std::string, FailureGroup> failureGroups;
    std::vector<Note> notes;

  private:
    ReportedDevice& DeviceAt(std::uint64_t address, std::int64_t time);
    void AddFailure(const Call& call);
};

}  // namespace orv::log
