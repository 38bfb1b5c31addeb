#include "bench/support/addresses.h"
#include "bench/support/arrangement.h"
#include "bench/support/measure.h"

namespace orv::bench {

namespace {

[[gnu::noinline]] ResultCode CopyByHand(std::int32_t id, std::int32_t index,
                                        DiscoveredDevice* info) {
    const std::lock_guard<std::mutex> lock(floorMutex);
    const FloorSession* session = FindFloorSession(id);
    if (!session || static_cast<std::size_t>(index) >= session->devices.records.size()) {
        return -1;
    }
    *info = session->devices.records[static_cast<std::size_t>(index)];
    return 0;
}

const Registered polls([] {
    for (const std::size_t listed : {10u, 1000u, 100000u, 1000000u}) {
        const std::string length = std::to_string(listed) + " listed";
        const auto arranged = [=] { ArrangeListed(listed); };
        Measure("device count, " + length, Ours, 1000, arranged,
                [] { return OrvScanner_GetDeviceCount(0); });

        auto* const addresses = new Addresses(AddressKind::Listed, listed);
        const auto next = [=] {
            return static_cast<std::int32_t>(addresses->Next() - ListedAddress);
        };
        const std::string record = "device record, " + length;
        Measure(record, Ours, 1000, arranged, [=] {
            DiscoveredDevice info;
            return OrvScanner_GetDeviceInfo(0, next(), &info);
        });
        Measure(record, Floor, 1000, arranged, [=] {
            DiscoveredDevice info;
            return CopyByHand(0, next(), &info);
        });
    }
});

const Registered records([] {
    for (const std::int32_t listed : {10, 1000, 100000, 1000000}) {
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
