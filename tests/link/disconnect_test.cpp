// Tests the order of the platform calls in OrvDevice_Disconnect, and which exports wait for it.
#include <thread>

#include "support/world.h"

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

// OrvDevice_Disconnect closes objects under the links' lock. Closing has no timeout.
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
