#include "orv/log/show/report_collector.h"

#include "orv/log/infer/causes.h"
#include "orv/log/show/format.h"
#include "orv/terminal/printable.h"

namespace orv::log {

namespace {

constexpr std::size_t FewTimes = 5;

// Maximum length in bytes of a name in a report. A forged name can have any length.
constexpr std::size_t LongestName = 120;

Span::State StateOf(const Call& call) {
    if (!call.result) {
        return Span::State::Unknown;
    }
    return *call.result == -1 ? Span::State::Failed : Span::State::Ok;
}

}  // namespace

ReportedDevice& ReportCollector::DeviceAt(std::uint64_t address, std::int64_t time) {
    const auto [place, isNew] = devices.try_emplace(address);
    ReportedDevice& device = place->second;
    if (isNew) {
        device.address = address;
        device.first = time;
    }
    device.last = time;
    return device;
}

void ReportCollector::OnEntry(const Entry& entry) {
    if (entry.kind == Kind::Advertisement) {
        advertisements.push_back({entry.time, 1});
        ReportedDevice& device = DeviceAt(entry.subject.handle, entry.time);
        device.signal.push_back({entry.time, entry.number});
        if (!entry.words.empty()) {
            device.name = entry.words.substr(0, LongestName);
        }
    } else if (entry.kind == Kind::Notification) {
        notifications.push_back({entry.time, entry.number});
        DeviceAt(entry.subject.handle, entry.time).bytesReceived += entry.number;
    } else if (entry.kind == Kind::Failure) {
        failures.push_back({entry.time, 1});
    }
}

void ReportCollector::OnCall(const Call& call) {
    const Family family = FactsOf(call.subject.function).family;
    calls[static_cast<int>(family)].push_back(
        {call.start, call.duration.atMost.value_or(0), StateOf(call), call.subject});
    const bool failed = call.result == -1;
    if (family == Family::Link) {
        ReportedDevice& device = DeviceAt(call.subject.handle, call.start);
        device.connects += call.subject.function == Function::Connect && !failed ? 1 : 0;
        device.failedCalls += failed ? 1 : 0;
        if (call.subject.function == Function::Send && !failed) {
            sent.push_back({call.start, call.subject.number});
            device.bytesSent += call.subject.number;
        }
    }
    if (failed || (!call.result && call.failures.count > 0)) {
        AddFailure(call);
    }
}

void ReportCollector::AddFailure(const Call& call) {
    const Suspects suspects = Explain(call);
    std::string key = CallWords({call.subject.function, call.subject.handle, 0});
    for (const Suspect& suspect : suspects) {
        key += ' ' + std::to_string(static_cast<int>(suspect.cause)) + '/' +
               std::to_string(suspect.steps);
    }
    FailureGroup& group = failureGroups[key];
    if (group.count++ == 0) {
        group.example = call;
        group.suspects = suspects;
    }
    if (group.firstFew.size() < FewTimes) {
        group.firstFew.push_back({call.start, call.stamp});
    }
}

}  // namespace orv::log
