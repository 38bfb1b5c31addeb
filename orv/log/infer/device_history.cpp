#include "orv/log/infer/device_history.h"

#include "orv/log/infer/causes.h"

namespace orv::log {

namespace {

// The system tries to connect for about 7 s, even if the library times out after 2000 ms.
constexpr std::int64_t SystemTries = 7000;

}  // namespace

DeviceEvidence DeviceHistory::Before(const Subject& subject, std::int64_t time) const {
    const auto found = FactsOf(subject.function).family == Family::Link
                           ? devices.find(subject.handle)
                           : devices.end();
    if (found == devices.end()) {
        return {};
    }
    const Device& device = found->second;
    return {device.isKnown, device.lastTimeout && time - *device.lastTimeout < SystemTries};
}

void DeviceHistory::Add(const Call& call) {
    if (call.subject.function != Function::Connect || !call.result) {
        return;
    }
    Device& device = devices[call.subject.handle];
    if (*call.result == 0) {
        device = {.isKnown = true, .lastTimeout = std::nullopt};
    } else if (call.duration.atLeast >= WaitLimit - Early) {
        device.lastTimeout = call.start;
    }
}

}  // namespace orv::log
