// Measures receive calls on empty queues, and calls that count devices, for several numbers of
// links or scanner sessions.
#include "bench/support/arrangement.h"
#include "bench/support/measure.h"

namespace orv::bench {

namespace {

[[gnu::noinline]] ResultCode PollByHand(BluetoothAddress address, std::int32_t count,
                                        std::uint8_t* buffer) {
    const std::lock_guard<std::mutex> lock(floorMutex);
    const FloorLink* link = FindFloorLink(address);
    if (!link || !buffer) {
        return -1;
    }
    return static_cast<ResultCode>(
        std::min(static_cast<std::size_t>(count), link->end - link->begin));
}

[[gnu::noinline]] ResultCode CountByHand(std::int32_t id) {
    const std::lock_guard<std::mutex> lock(floorMutex);
    const FloorSession* session = FindFloorSession(id);
    return session ? static_cast<ResultCode>(session->devices.records.size()) : -1;
}

std::uint8_t buffer[244];

const Registered lookups([] {
    for (const std::size_t count : {1u, 16u, 256u}) {
        const auto links = [count] {
            ArrangeLinks(count);
            ArrangeQueue(0);
        };
        const std::string poll = "empty poll, " + std::to_string(count) + " links";
        Measure(poll, Ours, 1000, links, [count] { return OrvDevice_Receive(count, 244, buffer); });
        Measure(poll, Floor, 1000, links, [count] { return PollByHand(count, 244, buffer); });

        const auto sessions = [count] { ArrangeSessions(count); };
        const auto last = static_cast<std::int32_t>(count - 1);
        const std::string lookup = "device count, " + std::to_string(count) + " sessions";
        Measure(lookup, Ours, 1000, sessions, [last] { return OrvScanner_GetDeviceCount(last); });
        Measure(lookup, Floor, 1000, sessions, [last] { return CountByHand(last); });
    }
});

}  // namespace

}  // namespace orv::bench
