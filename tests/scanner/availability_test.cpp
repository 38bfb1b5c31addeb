#include <chrono>

#include "support/world.h"

namespace orv {
namespace {

constexpr const char* Trace = "BluetoothAvailable";

struct Machine {
    const char* name;
    void (*arrange)();
    ResultCode result;
    const char* asked;  // how often the adapter, radios, kinds, states are read (one digit each)
    const char* failure = nullptr;
};

const auto First = [](std::int32_t kind, std::int32_t state) { OrvWorld_SetRadio(0, kind, state); };
const auto Add = [](std::int32_t kind, std::int32_t state) { OrvWorld_AddRadio(kind, state); };

constexpr std::int32_t On = OrvRadioState_On;
constexpr std::int32_t WiFi = OrvRadioKind_WiFi;
constexpr std::int32_t Bluetooth = OrvRadioKind_Bluetooth;

// The fixture's world has one Bluetooth radio, which is on.
const Machine Machines[] = {
    {"RadioOn", [] {}, 0, "1111"},
    {"RadioOff", [] { First(Bluetooth, OrvRadioState_Off); }, -1, "1111"},
    {"RadioDisabled", [] { First(Bluetooth, OrvRadioState_Disabled); }, -1, "1111"},
    {"RadioUnknown", [] { First(Bluetooth, OrvRadioState_Unknown); }, -1, "1111"},
    {"StatesOfOtherKindsUnread", [] { First(WiFi, On); }, -1, "1110"},
    {"BluetoothBehindOthers",
     [] { First(WiFi, On), Add(OrvRadioKind_Other, On), Add(Bluetooth, On); }, 0, "1131"},
    {"SecondRadioOn", [] { First(Bluetooth, OrvRadioState_Off), Add(Bluetooth, On); }, 0, "1122"},
    {"FirstMatchEndsTheWalk", [] { Add(Bluetooth, OrvRadioState_Off); }, 0, "1111"},
    {"NoRadio", [] { OrvWorld_Reset(1), OrvWorld_SetAdapter(1); }, -1, "1100"},
    {"NoAdapter", [] { OrvWorld_SetAdapter(0); }, -1, "1000"},
    {"SizeFails", [] { FailMember("IVectorView.get_Size"); }, -1, "1100", PlatformFailure},
};

class AvailabilityOf : public WorldTest, public testing::WithParamInterface<Machine> {};

TEST_P(AvailabilityOf, MakesTheFewestCalls) {
    GetParam().arrange();
    const char* const failure = GetParam().failure;
    ExpectCall(BluetoothAvailable, GetParam().result,
               failure != nullptr ? Lines{Trace, failure} : Lines{Trace});
    std::string asked;
    for (const char* member : {"BluetoothAdapter.GetDefaultAsync", "Radio.GetRadiosAsync",
                               "Radio.get_Kind", "Radio.get_State"}) {
        asked += std::to_string(OrvWorld_CallCount(member));
    }
    EXPECT_EQ(asked, GetParam().asked);
}

INSTANTIATE_TEST_SUITE_P(Machines, AvailabilityOf, testing::ValuesIn(Machines), RowName);

using Availability = WorldTest;

// The simulated world lists only radios that existed at the first request, as documented for
// Windows.
TEST_F(Availability, RadioThatComesLaterIsNotListed) {
    First(Bluetooth, OrvRadioState_Off);
    EXPECT_EQ(BluetoothAvailable(), -1);
    Add(Bluetooth, On);
    EXPECT_EQ(BluetoothAvailable(), -1);
    First(Bluetooth, On);
    EXPECT_EQ(BluetoothAvailable(), 0);
}

TEST_F(Availability, TimesOutOnRealTimeToo) {
    OrvWorld_Reset(0);
    OrvWorld_SetAdapter(1);
    OrvWorld_Answer(0, OrvOperation_FindAdapter, OrvAnswer_Never, 1);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(BluetoothAvailable(), -1);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1980));
}

}  // namespace
}  // namespace orv
