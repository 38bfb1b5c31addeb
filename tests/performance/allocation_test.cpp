// Counts the allocations of each call. A platform operation needs a handler, which is allocated
// because it may outlive the call.
#include <gtest/gtest.h>

#include "bench/support/allocations.h"
#include "bench/support/arrangement.h"
#include "link/connection_table.h"
#include "link/receive.h"
#include "scanner/advertisement_handler.h"
#include "scanner/scanner_session.h"

namespace orv {
namespace {

using bench::AllocationsSoFar;
using bench::ListedAddress;

std::uint8_t buffer[64 * 1024];

struct CallRow {
    const char* name;
    ResultCode (*call)();
    ResultCode result;
    std::size_t allocations;
};

// Before each call, a link with address 1 and a session with id 0 exist.
const CallRow CallRows[] = {
    {"Poll", [] { return OrvDevice_Receive(1, 244, buffer); }, 0, 0},
    {"PollOfNoLink", [] { return OrvDevice_Receive(9, 244, buffer); }, -1, 0},
    {"Flush", [] { return OrvDevice_Flush(1); }, 0, 0},
    {"DeviceCount", [] { return OrvScanner_GetDeviceCount(0); }, 100, 0},
    {"DeviceInfo",
     [] {
         DiscoveredDevice info;
         return OrvScanner_GetDeviceInfo(0, 99, &info);
     },
     0, 0},
    {"Stop", [] { return OrvScanner_Stop(0); }, 0, 0},
    {"Start", [] { return OrvScanner_Start(0); }, 0, 0},
    {"LogDisable", Logging_Disable, 0, 0},
    {"LogLine", [] { return Logging_AppendLine("text", 4); }, -1, 0},
    {"SendOfNegativeLength", [] { return OrvDevice_Send(1, -1, buffer); }, -1, 0},
    {"DisconnectOfNoLink", [] { return OrvDevice_Disconnect(9); }, -1, 0},
    {"Available", BluetoothAvailable, 0, 2},
    {"Send", [] { return OrvDevice_Send(1, 244, buffer); }, 244, 1},
    // Connect allocates the link, a handler for each of five platform operations, and a handler
    // for notifications.
    {"Connect", [] { return OrvDevice_Connect(2); }, 0, 7},
    {"Disconnect", [] { return OrvDevice_Disconnect(1); }, 0, 1},
    // Initialize allocates the advertisement handler and the session.
    {"Initialize", OrvScanner_Initialize, 1, 2},
    {"Deinitialize", [] { return OrvScanner_Deinitialize(0); }, 0, 0},
};

class Allocations : public testing::TestWithParam<CallRow> {
  protected:
    void Arrange() {
        for (std::int32_t id = 0; id < 4; ++id) {
            OrvScanner_Deinitialize(id);
        }
        for (BluetoothAddress address = 1; address < 4; ++address) {
            while (OrvDevice_Disconnect(address) == 0) {
            }
        }
        bench::floorLinks.clear();
        bench::floorSessions.clear();
        bench::ArrangeLinks(1);
        bench::ArrangeListed(100);
    }
};

TEST_P(Allocations, MatchTheExpectedCount) {
    for (int round = 0; round < 2; ++round) {  // in the first round, the library caches factories
        Arrange();
        const std::size_t before = AllocationsSoFar().count;
        const ResultCode result = GetParam().call();
        const std::size_t after = AllocationsSoFar().count;
        ASSERT_EQ(result, GetParam().result);
        if (round > 0) {
            EXPECT_EQ(after - before, GetParam().allocations);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Calls, Allocations, testing::ValuesIn(CallRows),
                         [](const auto& row) { return std::string(row.param.name); });

// The library composes a log line of usual length on the stack.
TEST(AllocationsWithTheLogOn, NoneForALine) {
    bench::ArrangeLinks(1);
    ASSERT_EQ(Logging_Enable(), 0);
    const std::size_t before = AllocationsSoFar().count;
    OrvDevice_Receive(1, 244, buffer);
    Logging_AppendLine("text", 4);
    EXPECT_EQ(AllocationsSoFar().count, before);
    Logging_Disable();
}

TEST(AllocationsOfEvents, AreOnlyTheQueuesBlocks) {
    bench::ArrangeLinks(1);
    const auto sender = bench::SenderOf(1);
    const auto event = Reference<IGattValueChangedEventArgs>::Adopt(new bench::Notification(244));
    OnDataReceived(sender, event);
    OrvDevice_Flush(1);
    const auto before = AllocationsSoFar();
    constexpr std::size_t Count = 1000;
    for (std::size_t i = 0; i < Count; ++i) {
        OnDataReceived(sender, event);
    }
    const auto filled = AllocationsSoFar();
    EXPECT_EQ(filled.count - before.count, (Count * 244 + 4079) / 4080);
    EXPECT_LE(static_cast<double>(filled.bytes - before.bytes), 1.1 * Count * 244);

    // If the host receives regularly, the queue reuses its last block.
    while (OrvDevice_Receive(1, sizeof buffer, buffer) > 0) {
    }
    for (std::size_t i = 0; i < Count; ++i) {
        OnDataReceived(sender, event);
        ASSERT_EQ(OrvDevice_Receive(1, sizeof buffer, buffer), 244);
    }
    EXPECT_EQ(AllocationsSoFar().count, filled.count);
}

// Checks the memory of the device list at each length, and how much each new device adds.
TEST(AllocationsOfEvents, AreOnlyTheListsChunks) {
    bench::ArrangeListed(0);
    bench::Heard heard(ListedAddress, u"ORV-0042");
    const Reference<IBluetoothLEAdvertisementReceivedEventArgs> event(&heard);
    const auto before = AllocationsSoFar();
    constexpr std::size_t Count = 100000;
    constexpr std::size_t FirstDevices = 4096;  // bytes that the list allocates at its start
    auto last = before;
    for (std::size_t listed = 1; listed <= Count; ++listed) {
        OnAdvertisementReceived(bench::watcher, event);
        ++heard.address;
        const auto now = AllocationsSoFar();
        ASSERT_LE(now.bytes - before.bytes, 96 * listed + FirstDevices) << listed;
        ASSERT_LE(now.bytes - last.bytes, 80 * listed / 8 + FirstDevices) << listed;
        ASSERT_LE(now.count - last.count, listed == 1 ? 3u : 2u) << listed;
        last = now;
    }
    ASSERT_EQ(OrvScanner_GetDeviceCount(0), static_cast<ResultCode>(Count));

    const std::size_t count = AllocationsSoFar().count;
    heard.address = ListedAddress + 5000;
    OnAdvertisementReceived(bench::watcher, event);
    EXPECT_EQ(AllocationsSoFar().count, count) << "a listed device";
    bench::Heard foreign(1, u"Lamp");
    const Reference<IBluetoothLEAdvertisementReceivedEventArgs> other(&foreign);
    OnAdvertisementReceived(bench::watcher, other);
    EXPECT_EQ(AllocationsSoFar().count, count) << "a foreign device";
}

}  // namespace
}  // namespace orv
