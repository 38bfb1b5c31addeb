// Closing a link: what the device's answer cannot prevent, what a failure leaves, and which of two
// links of an address goes.
#include <thread>

#include "support/waits.h"

namespace orv {
namespace {

constexpr const char* Trace = "OrvDevice_Disconnect 176685338322165";

const auto Disconnect = [] { return OrvDevice_Disconnect(Address); };

void ExpectGone() {
    EXPECT_EQ(OrvDevice_Flush(Address), -1);
    EXPECT_EQ(OrvWorld_HeldObjects(), 0);
    EXPECT_EQ(OrvWorld_OpenObjects(Address), 0);
    EXPECT_EQ(OrvDevice_Connect(Address), 0);
    EXPECT_EQ(OrvDevice_Flush(Address), 0) << "bytes of the old link";
}

void ExpectKept() {
    std::uint8_t bytes[4] = {};
    EXPECT_EQ(OrvDevice_Receive(Address, 2, bytes), 2);
    EXPECT_EQ(bytes[1], 8);
    EXPECT_EQ(OrvDevice_Flush(Address), 1);
}

// A link with three bytes queued.
class DisconnectTest : public WorldTest {
  protected:
    void SetUp() override {
        WorldTest::SetUp();
        ASSERT_EQ(OrvDevice_Connect(Address), 0);
        Notify(Address, {7, 8, 9});
    }
};

TEST_F(DisconnectTest, SwitchesOffThenClosesServiceAndDevice) {
    const std::int32_t before = OrvWorld_CallCount(nullptr);
    ExpectCall(Disconnect, 0, {Trace});
    EXPECT_EQ(Calls(before), (Lines{std::string(WriteDescriptor) + " 0",
                                    "IAsyncOperation.put_Completed", CloseService, CloseDevice}));
    const std::int32_t after = OrvWorld_CallCount(nullptr);
    ExpectCall(Disconnect, -1, {Trace});
    EXPECT_EQ(OrvDevice_Disconnect(OtherAddress), -1);
    EXPECT_EQ(OrvWorld_CallCount(nullptr), after) << "a call without a link";
    ExpectGone();
}

using DisconnectWait = WaitTest;

TEST_P(DisconnectWait, IsNotExaminedUnlessItIsRaised) {
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    Notify(Address, {7, 8, 9});
    const bool gone = ExpectAnswered(Address, Trace, Disconnect, {0, 0, false});
    gone ? ExpectGone() : ExpectKept();
}

INSTANTIATE_TEST_SUITE_P(Endings, DisconnectWait,
                         testing::ValuesIn(Endings({OrvOperation_WriteDescriptor})), EndingName);

TEST_F(DisconnectTest, LateNotificationsAreTracedAndDropped) {
    OrvDevice_Disconnect(Address);
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    EXPECT_EQ(LinesOf([] {
                  Notify(Address, {1, 2}, 0);
              }),
              Lines{"OnDataReceived 176685338322165 2"});
    EXPECT_EQ(OrvDevice_Flush(Address), 0) << "bytes of a closed link";
    Notify(Address, {1, 2}, 1);
    EXPECT_EQ(OrvDevice_Flush(Address), 2);
}

TEST_F(DisconnectTest, OldestLinkOfAnAddressCountsUntilItGoes) {
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    Notify(Address, {1, 2, 3, 4, 5}, 1);
    EXPECT_EQ(OrvDevice_Flush(Address), 3);
    EXPECT_EQ(OrvDevice_Flush(Address), 0);
    EXPECT_EQ(Disconnect(), 0);
    std::uint8_t bytes[8] = {};
    EXPECT_EQ(OrvDevice_Receive(Address, 8, bytes), 5);
    EXPECT_EQ(bytes[4], 5);
    EXPECT_EQ(Disconnect(), 0);
    EXPECT_EQ(Disconnect(), -1);
    ExpectGone();
}

// Closing has no limit of its own and happens under the lock of the links.
TEST_F(DisconnectTest, HangingCloseLeavesLogAndScannerUsable) {
    OrvWorld_Hang(CloseService);
    std::thread disconnecting([] { EXPECT_EQ(Disconnect(), 0); });
    EXPECT_EQ(OrvWorld_AwaitCalls(CloseService, 1), 0);
    std::thread receiving([] { EXPECT_EQ(OrvDevice_Receive(Address, 0, nullptr), -1); });
    EXPECT_TRUE(AwaitLog("OrvDevice_Receive 176685338322165\r\n")) << "traced before the lock";
    EXPECT_EQ(Logging_AppendLine("host", 4), 18);
    EXPECT_EQ(BluetoothAvailable(), 0);
    EXPECT_EQ(OrvScanner_Initialize(), 0);
    EXPECT_EQ(OrvScanner_Start(0), 0);
    Advertise(Address);
    EXPECT_EQ(OrvScanner_GetDeviceCount(0), 1);
    EXPECT_EQ(OrvScanner_Stop(0), 0);
    OrvWorld_Release(CloseService);
    disconnecting.join();
    receiving.join();
}

}  // namespace
}  // namespace orv
