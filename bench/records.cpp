// What does it cost to read the whole list?
#include "bench/support/arrangement.h"
#include "bench/support/measure.h"

namespace orv::bench {

namespace {

[[gnu::noinline]] ResultCode CopyByHand(std::int32_t id, std::int32_t index,
                                        DiscoveredDevice* info) {
    const std::lock_guard<std::mutex> lock(floorMutex);
    const FloorSession* session = FindFloorSession(id);
    if (!session || static_cast<std::size_t>(index) >= session->records.size()) {
        return -1;
    }
    *info = session->records[static_cast<std::size_t>(index)];
    return 0;
}

const Registered records([] {
    for (const std::int32_t listed : {10, 1000, 10000, 100000}) {
        const std::string row = "reading all of " + std::to_string(listed) + " records";
        const auto arranged = [listed] { ArrangeListed(static_cast<std::size_t>(listed)); };
        const int batch = listed > 1000 ? 1 : 10;
        Measure(row, Ours, batch, arranged, [listed] {
            DiscoveredDevice info;
            for (std::int32_t i = 0; i < listed; ++i) {
                OrvScanner_GetDeviceInfo(0, i, &info);
            }
        });
        Measure(row, Floor, batch, arranged, [listed] {
            DiscoveredDevice info;
            for (std::int32_t i = 0; i < listed; ++i) {
                benchmark::DoNotOptimize(CopyByHand(0, i, &info));
            }
        });
    }
});

}  // namespace

}  // namespace orv::bench
