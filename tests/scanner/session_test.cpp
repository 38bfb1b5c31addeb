// Scanner sessions: their ids, their lists, what each call asks of the watcher, and what a failure
// leaves.
#include <sstream>
#include <thread>

#include "support/world.h"

namespace orv {
namespace {

constexpr const char* Start = "BluetoothLEAdvertisementWatcher.Start";
constexpr const char* Stop = "BluetoothLEAdvertisementWatcher.Stop";

const auto StartFirst = [] { return OrvScanner_Start(0); };
const auto StopFirst = [] { return OrvScanner_Stop(0); };

// Steps: "+" creates a session; "-n" removes, ">n" starts, "!n" stops and "#n" counts session n;
// "@n" lets the device be heard by the watcher created as number n, "@-1" by all that are started.
struct Script {
    const char* name;
    const char* steps;
    const char* results;  // of all steps, in order
};

const Script Scripts[] = {
    {"IdsCountFromZero", "+ + +", "0 1 2"},
    {"HighestIdIsGivenOutAgain", "+ + -1 +", "0 1 0 1"},
    {"GapBelowTheHighestIdStays", "+ + -0 +", "0 1 0 2"},
    {"OneAboveTheHighestIdLeft", "+ + + -1 -2 +", "0 1 2 0 0 1"},
    {"ZeroAgainWhenAllAreGone", "+ + -0 -1 +", "0 1 0 0 0"},
    {"RemovedOnce", "+ -0 -0 >0 !0 #0", "0 0 -1 -1 -1 -1"},
    {"FreshListIsEmpty", "+ #0 !0 #0 >0 #0", "0 0 0 0 0 0"},
    {"StopKeepsTheListStartEmptiesIt", "+ >0 @-1 !0 #0 >0 #0", "0 0 1 0 1 0 0"},
    {"StartWhileScanningEmptiesIt", "+ >0 @-1 >0 #0 @-1 #0", "0 0 1 0 0 1 1"},
    {"StoppedHearsNothing", "+ >0 !0 @-1 #0", "0 0 0 0 0"},
    {"NotYetStartedStillListens", "+ @0 #0", "0 1 1"},
    {"AllHearWhatAllAreSent", "+ + >0 >1 @-1 #0 #1", "0 1 0 0 2 1 1"},
    {"EachHearsItsOwn", "+ + >0 >1 @1 #0 #1 >0 #1", "0 1 0 0 1 0 1 0 1"},
    {"RemovedHearsNothing", "+ >0 -0 @0 + >0 @0 #0 @1 #0", "0 0 0 1 0 0 1 0 1 1"},
};

class SessionScript : public WorldTest, public testing::WithParamInterface<Script> {};

TEST_P(SessionScript, GivesTheseResults) {
    std::istringstream steps(GetParam().steps);
    std::string results;
    for (std::string step; steps >> step;) {
        const std::int32_t number = step == "+" ? 0 : std::stoi(step.substr(1));
        const ResultCode result = step[0] == '+'   ? OrvScanner_Initialize()
                                  : step[0] == '-' ? OrvScanner_Deinitialize(number)
                                  : step[0] == '>' ? OrvScanner_Start(number)
                                  : step[0] == '!' ? OrvScanner_Stop(number)
                                  : step[0] == '#' ? OrvScanner_GetDeviceCount(number)
                                                   : OrvWorld_Advertise(Address, 0, number);
        OrvWorld_Settle();
        results += (results.empty() ? "" : " ") + std::to_string(result);
    }
    EXPECT_EQ(results, GetParam().results);
    for (const std::string& line : LogLines()) {
        EXPECT_NE(line, PlatformFailure);
    }
}

INSTANTIATE_TEST_SUITE_P(Scripts, SessionScript, testing::ValuesIn(Scripts), RowName);

class ScannerTest : public WorldTest {
  protected:
    void SetUp() override {
        WorldTest::SetUp();
        ASSERT_EQ(OrvScanner_Initialize(), 0);
    }
};

TEST_F(ScannerTest, EachCallAsksTheWatcherForNoMore) {
    StopFirst(), StartFirst(), StartFirst(), StopFirst(), OrvScanner_GetDeviceCount(0);
    OrvScanner_Deinitialize(0);
    EXPECT_EQ(Calls(),
              (Lines{"BluetoothLEAdvertisementWatcher.ActivateInstance",
                     "BluetoothLEAdvertisementWatcher.put_ScanningMode 1",
                     "BluetoothLEAdvertisementWatcher.add_Received", Stop, Start, Start, Stop}));
    EXPECT_EQ(OrvWorld_HeldObjects(), 0);
}

// A start or stop that hangs keeps the scanner waiting, and nothing else.
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
