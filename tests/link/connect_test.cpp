// Tests OrvDevice_Connect: the order of its steps, and the objects that it closes.
#include <thread>

#include "support/world.h"

namespace orv {
namespace {

constexpr const char* Trace = "OrvDevice_Connect 176685338322165";
constexpr const char* LinkService = "4880c12c-fdcb-4077-8920-a450d7f9b907";
constexpr const char* LinkCharacteristic = "fec26ec4-6d71-4442-9f81-55bc21d658d6";

const auto Connect = [] { return OrvDevice_Connect(Address); };

// Returns the names of the calls that close objects, in order and including failed calls.
Lines Closes() {
    Lines closes;
    for (const std::string& call : Calls()) {
        if (call == CloseService || call == CloseDevice) {
            closes.push_back(call);
        }
    }
    return closes;
}

void ExpectNothingLeft() {
    EXPECT_EQ(OrvDevice_Flush(Address), -1) << "a link was left in the table";
    EXPECT_EQ(OrvWorld_OpenObjects(Address), 0);
    EXPECT_EQ(OrvWorld_HeldObjects(), 0);
}

using ConnectTest = WorldTest;

TEST_F(ConnectTest, MakesTheseCallsInOrderAndNoOthers) {
    ExpectCall(Connect, 0, {Trace});
    std::string calls;
    for (const std::string& call : Calls()) {
        calls += call.substr(call.find('.') + 1) + ", ";
    }
    EXPECT_EQ(calls,
              "FromBluetoothAddressAsync 176685338322165, put_Completed, GetResults, "
              "GetGattServicesForUuidWithCacheModeAsync 1, put_Completed, GetResults, get_Status, "
              "get_Services, GetAt 0, RequestAccessAsync, put_Completed, GetResults, "
              "GetCharacteristicsForUuidWithCacheModeAsync 1, put_Completed, GetResults, "
              "get_Status, get_Characteristics, GetAt 0, add_ValueChanged, "
              "WriteClientCharacteristicConfigurationDescriptorAsync 1, put_Completed, "
              "GetResults, ");
    EXPECT_EQ(OrvWorld_OpenObjects(Address), 2);
    OrvWorld_Settle();
    EXPECT_EQ(OrvWorld_HeldHandlers(), 1) << "of the event alone";
    EXPECT_EQ(OrvDevice_Flush(Address), 0);
}

TEST_F(ConnectTest, EachWaitHasItsOwnTimeout) {
    if (OrvWorld_TimeIsSimulated() == 0) {
        GTEST_SKIP() << "ten seconds on real time";
    }
    for (std::int32_t i = OrvOperation_FindDevice; i <= OrvOperation_WriteDescriptor; ++i) {
        OrvWorld_Answer(Address, i, OrvAnswer_After, 1999);
    }
    const std::int64_t start = OrvWorld_Now();
    EXPECT_EQ(Connect(), 0);
    EXPECT_EQ(OrvWorld_Now() - start, 5 * 1999);
}

TEST_F(ConnectTest, DevicesWithoutTheServiceOrCharacteristicAreRefused) {
    OrvWorld_RemoveServices(Address);
    ExpectCall(Connect, -1, {Trace, PlatformFailure});
    OrvWorld_AddService(Address, LinkCharacteristic);
    OrvWorld_AddCharacteristic(Address, 0, LinkCharacteristic);
    ExpectCall(Connect, -1, {Trace, PlatformFailure});  // only a wrong service exists
    const std::int32_t service = OrvWorld_AddService(Address, LinkService);
    OrvWorld_AddCharacteristic(Address, service, LinkService);
    ExpectCall(Connect, -1, {Trace, PlatformFailure});  // only a wrong characteristic exists
    EXPECT_EQ(Closes(), (Lines{CloseDevice, CloseDevice, CloseService, CloseDevice}));
    ExpectNothingLeft();
    OrvWorld_AddCharacteristic(Address, service, LinkCharacteristic);
    OrvWorld_AddService(Address, LinkService);
    EXPECT_EQ(Connect(), 0) << "the first service counts, further ones do not";
    OrvWorld_ForgetDevice(Address);
    EXPECT_EQ(Connect(), -1);
    EXPECT_EQ(OrvDevice_Flush(Address), 0) << "the link was lost";
}

TEST_F(ConnectTest, FailingCloseIsLoggedAndTheRestStillClosed) {
    const std::tuple<Lines, std::int32_t, Lines> rows[] = {
        {{CloseService}, OrvAnswer_Status, {Trace, PlatformFailure}},
        {{CloseDevice}, OrvAnswer_Status, {Trace, PlatformFailure}},
        {{CloseService, CloseDevice}, OrvAnswer_Status, {Trace, PlatformFailure, PlatformFailure}},
        {{CloseService, CloseDevice},
         OrvAnswer_StartFails,
         {Trace, OutOfMemory, PlatformFailure, PlatformFailure}},
    };
    for (const auto& [failing, manner, lines] : rows) {
        OrvWorld_Reset(1);
        ASSERT_EQ(OrvWorld_AddDevice(Address, "ORV"), 0);
        OrvWorld_Answer(Address, OrvOperation_WriteDescriptor, manner,
                        manner == OrvAnswer_Status ? 1 : NoMemory);
        for (const std::string& member : failing) {
            FailMember(member.c_str());
        }
        ExpectCall(Connect, -1, lines);
        EXPECT_EQ(Closes(), (Lines{CloseService, CloseDevice}));
        EXPECT_EQ(OrvWorld_OpenObjects(Address), static_cast<std::int32_t>(failing.size()));
        EXPECT_EQ(OrvWorld_HeldObjects(), 0);
    }
}

TEST_F(ConnectTest, FailureLineIsWrittenBeforeTheCleanupWhichHoldsNoLock) {
    AddDevice(OtherAddress, "ORV-0043");
    OrvWorld_Answer(Address, OrvOperation_FindCharacteristics, OrvAnswer_StartFails, Fails);
    for (const char* close : {CloseService, CloseDevice}) {
        const std::int32_t calls = OrvWorld_CallCount(close);
        OrvWorld_Hang(close);
        Logging_Enable();
        std::thread connecting([] { EXPECT_EQ(Connect(), -1); });
        EXPECT_EQ(OrvWorld_AwaitCalls(close, calls + 1), 0);
        EXPECT_EQ(LogLines(), (Lines{Trace, PlatformFailure}));
        EXPECT_EQ(OrvDevice_Connect(OtherAddress), 0);
        EXPECT_EQ(OrvDevice_Flush(OtherAddress), 0);
        OrvWorld_Release(close);
        connecting.join();
        EXPECT_EQ(OrvDevice_Disconnect(OtherAddress), 0);
    }
}

}  // namespace
}  // namespace orv
