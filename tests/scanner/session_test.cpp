// Tests the scanner's platform calls, and which exports wait for them. The tests with the reference
// model check the scanner's results, lists and states.
#include <thread>

#include "support/world.h"

namespace orv {
namespace {

constexpr const char* Start = "BluetoothLEAdvertisementWatcher.Start";
constexpr const char* Stop = "BluetoothLEAdvertisementWatcher.Stop";

const auto StartFirst = [] { return OrvScanner_Start(0); };
const auto StopFirst = [] { return OrvScanner_Stop(0); };

class ScannerTest : public WorldTest {
  protected:
    void SetUp() override {
        WorldTest::SetUp();
        ASSERT_EQ(OrvScanner_Initialize(), 0);
    }
};

TEST_F(ScannerTest, EachCallMakesTheseWatcherCallsOnly) {
    StopFirst(), StartFirst(), StartFirst(), StopFirst(), OrvScanner_GetDeviceCount(0);
    OrvScanner_Deinitialize(0);
    EXPECT_EQ(Calls(),
              (Lines{"BluetoothLEAdvertisementWatcher.ActivateInstance",
                     "BluetoothLEAdvertisementWatcher.put_ScanningMode 1",
                     "BluetoothLEAdvertisementWatcher.add_Received", Stop, Start, Start, Stop}));
    EXPECT_EQ(OrvWorld_HeldObjects(), 0);
}

TEST_F(ScannerTest, NameIsUpdatedIfScanResponsesAreNotMarked) {
    StartFirst();
    Advertise(Address);
    FailMember("BluetoothLEAdvertisementReceivedEventArgs.QueryInterface", NoInterface);
    const std::uint16_t name[] = {'O', 'R', 'V', '2'};
    OrvWorld_SetName(Address, OrvPacket_ScanResponse, name, 4);
    OrvWorld_AddSection(Address, OrvPacket_ScanResponse, 0x16, Bytes{0x00, 0x05, 1}.data(), 3);
    Advertise(Address, OrvPacket_ScanResponse);
    DiscoveredDevice info = {};
    EXPECT_EQ(OrvScanner_GetDeviceInfo(0, 0, &info), 0);
    EXPECT_STREQ(info.name, "ORV2");
    EXPECT_EQ(info.value0500, 0xFF);
}

TEST_F(ScannerTest, HangingStartOrStopLeavesLogAndLinksUsable) {
    AddDevice(OtherAddress, "Lamp");
    StartFirst();
    Advertise(Address);
    for (const bool stop : {true, false}) {
        const char* const member = stop ? Stop : Start;
        const std::int32_t calls = OrvWorld_CallCount(member);
        OrvWorld_Hang(member);
        std::thread hanging([&] { EXPECT_EQ(stop ? StopFirst() : StartFirst(), 0); });
        EXPECT_EQ(OrvWorld_AwaitCalls(member, calls + 1), 0);
        Logging_Enable();
        std::thread waiting([&] { EXPECT_EQ(OrvScanner_GetDeviceCount(0), stop ? 1 : 0); });
        EXPECT_TRUE(AwaitLog("OrvScanner_GetDeviceCount 0\r\n")) << "traced before the lock";
        OrvWorld_Advertise(OtherAddress, OrvPacket_Advertisement, 0);
        EXPECT_TRUE(AwaitLog("OnAdvertisementReceived 18838586676582 <Lamp> -60\r\n"));
        EXPECT_EQ(Logging_AppendLine("host", 4), 18);
        EXPECT_EQ(BluetoothAvailable(), 0);
        EXPECT_EQ(OrvDevice_Connect(Address), 0);
        EXPECT_EQ(OrvDevice_Send(Address, 0, nullptr), 0);
        EXPECT_EQ(OrvDevice_Disconnect(Address), 0);
        OrvWorld_Release(member);
        hanging.join();
        waiting.join();
        OrvWorld_Settle();
    }
}

}  // namespace
}  // namespace orv
