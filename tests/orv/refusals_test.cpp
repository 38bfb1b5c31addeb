// Tests the log reader with calls that the library rejects at once, or that fail in a platform
// call, but not by a timeout.
#include "host.h"

namespace orv {
namespace {

using log::Cause;

// When the log reader must report a single cause: never, only in logs with result lines, or always.
enum class Alone { Never, WithResult, Always };

struct Refusal {
    const char* name;
    Cause cause;
    Alone alone;
    void (*before)(bool results);
    ResultCode (*call)();
};

void Nothing(bool) {}
void Link(bool results) {
    CallLogged(results, [] { return OrvDevice_Connect(Address); });
}
void Session(bool results) {
    CallLogged(results, [] { return OrvScanner_Initialize(); });
}
void ListOfOne(bool results) {
    Session(results);
    CallLogged(results, [] { return OrvScanner_Start(0); });
    Advertise(Address);
    CallLogged(results, [] { return OrvScanner_GetDeviceCount(0); });
}

ResultCode GetInfo(std::int32_t index, bool null) {
    DiscoveredDevice info;
    return OrvScanner_GetDeviceInfo(0, index, null ? nullptr : &info);
}

const Refusal Refusals[] = {
    {"FlushWithoutLink", Cause::NoLink, Alone::WithResult, Nothing,
     [] { return OrvDevice_Flush(Address); }},
    {"DisconnectWithoutLink", Cause::NoLink, Alone::WithResult, Nothing,
     [] { return OrvDevice_Disconnect(Address); }},
    {"ReceiveWithoutLink", Cause::NoLink, Alone::Never, Nothing,
     [] { return OrvDevice_Receive(Address, 0, nullptr); }},
    {"SendWithoutLink", Cause::NoLink, Alone::Never, Nothing,
     [] { return OrvDevice_Send(Address, 1, Sequence(1).data()); }},
    {"ReceiveAfterDisconnect", Cause::NoLink, Alone::Never,
     [](bool results) {
         Link(results);
         CallLogged(results, [] { return OrvDevice_Disconnect(Address); });
     },
     [] { return OrvDevice_Receive(Address, 0, nullptr); }},
    {"ReceiveAfterRefusedFlush", Cause::NoLink, Alone::WithResult,
     [](bool results) { CallLogged(results, [] { return OrvDevice_Flush(Address); }); },
     [] { return OrvDevice_Receive(Address, 0, nullptr); }},
    {"ReceiveIntoNull", Cause::NullPointer, Alone::WithResult, Link,
     [] { return OrvDevice_Receive(Address, 1, nullptr); }},
    {"SendOfNull", Cause::NullPointer, Alone::Never, Link,
     [] { return OrvDevice_Send(Address, 1, nullptr); }},
    {"SendOfNegativeLength", Cause::NegativeLength, Alone::Always, Link,
     [] { return OrvDevice_Send(Address, -1, nullptr); }},
    {"SendWithoutWriter", Cause::SystemFailure, Alone::Never,
     [](bool) { FailMember("DataWriter.WriteBytes"); },
     [] { return OrvDevice_Send(Address, 1, Sequence(1).data()); }},
    {"DisconnectCannotCloseService", Cause::SystemFailure, Alone::WithResult,
     [](bool results) {
         Link(results);
         FailMember(CloseService);
     },
     [] { return OrvDevice_Disconnect(Address); }},
    {"ConnectCannotClose", Cause::ClosingFailed, Alone::Never,
     [](bool) {
         OrvWorld_Answer(Address, OrvOperation_RequestAccess, OrvAnswer_Status, 2);
         FailMember(CloseDevice);
     },
     [] { return OrvDevice_Connect(Address); }},
    {"ConnectOfForgotten", Cause::UnknownDevice, Alone::Never,
     [](bool) { OrvWorld_ForgetDevice(Address); }, [] { return OrvDevice_Connect(Address); }},
    {"ConnectWithoutServices", Cause::NotOffered, Alone::Never,
     [](bool) { OrvWorld_RemoveServices(Address); }, [] { return OrvDevice_Connect(Address); }},
    {"NoWait", Cause::SystemFailure, Alone::WithResult, [](bool) { OrvWorld_FailWaits(1, Fails); },
     [] { return BluetoothAvailable(); }},
    {"RadioOff", Cause::NoRadioOn, Alone::Never,
     [](bool) { OrvWorld_SetRadio(0, OrvRadioKind_Bluetooth, OrvRadioState_Off); },
     [] { return BluetoothAvailable(); }},
    {"AdapterGone", Cause::NoAdapter, Alone::Never, [](bool) { OrvWorld_SetAdapter(0); },
     [] { return BluetoothAvailable(); }},
    {"StartOfNoSession", Cause::NoSession, Alone::WithResult, Nothing,
     [] { return OrvScanner_Start(7); }},
    {"StopOfNoSession", Cause::NoSession, Alone::WithResult, Nothing,
     [] { return OrvScanner_Stop(7); }},
    {"CountOfNegativeSession", Cause::NoSession, Alone::Always, Nothing,
     [] { return OrvScanner_GetDeviceCount(-1); }},
    {"DeinitializeTwice", Cause::NoSession, Alone::WithResult,
     [](bool results) {
         Session(results);
         CallLogged(results, [] { return OrvScanner_Deinitialize(0); });
     },
     [] { return OrvScanner_Deinitialize(0); }},
    {"InfoOfNoSession", Cause::NoSession, Alone::Never, Nothing, [] { return GetInfo(0, false); }},
    {"InfoBehindTheList", Cause::IndexOutOfRange, Alone::Never, ListOfOne,
     [] { return GetInfo(1, false); }},
    {"InfoBeforeTheList", Cause::IndexOutOfRange, Alone::WithResult, ListOfOne,
     [] { return GetInfo(-1, false); }},
    {"InfoIntoNull", Cause::NullPointer, Alone::WithResult, ListOfOne,
     [] { return GetInfo(0, true); }},
    {"NoWatcher", Cause::SystemFailure, Alone::WithResult,
     [](bool) { FailMember("BluetoothLEAdvertisementWatcher.put_ScanningMode"); },
     [] { return OrvScanner_Initialize(); }},
    {"StartFails", Cause::SystemFailure, Alone::WithResult,
     [](bool results) {
         Session(results);
         FailMember("BluetoothLEAdvertisementWatcher.Start");
     },
     [] { return OrvScanner_Start(0); }},
    {"StopLacksMemory", Cause::OutOfMemory, Alone::WithResult,
     [](bool results) {
         ListOfOne(results);
         FailMember("BluetoothLEAdvertisementWatcher.Stop", NoMemory);
     },
     [] { return OrvScanner_Stop(0); }},
};

class RefusedCall : public WorldTest,
                    public testing::WithParamInterface<std::tuple<Refusal, bool>> {};

TEST_P(RefusedCall, IsNamed) {
    const auto& [refusal, results] = GetParam();
    refusal.before(results);
    EXPECT_EQ(CallLogged(results, refusal.call), -1);

    const log::Call call = ReadLog().calls.back();
    EXPECT_EQ(call.result.value_or(-1), -1);
    ExpectNamed(call, refusal.cause);
    const bool alone = log::Explain(call).size() == 1;
    if (refusal.alone != Alone::WithResult || results) {
        EXPECT_EQ(alone, refusal.alone != Alone::Never);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, RefusedCall,
                         testing::Combine(testing::ValuesIn(Refusals), testing::Bool()),
                         [](const auto& row) {
                             return std::string(std::get<0>(row.param).name) +
                                    (std::get<1>(row.param) ? "WithResult" : "WithoutResult");
                         });

}  // namespace
}  // namespace orv
