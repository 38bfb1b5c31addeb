// Opening a link: every step in its order, every way in which it can go wrong, and what is closed.
#include <thread>

#include "support/waits.h"

namespace orv {
namespace {

constexpr const char* Trace = "OrvDevice_Connect 176685338322165";
constexpr const char* LinkService = "4880c12c-fdcb-4077-8920-a450d7f9b907";
constexpr const char* LinkCharacteristic = "fec26ec4-6d71-4442-9f81-55bc21d658d6";

// What a connect that got as far as `operation`, and not beyond it, has to close again.
Lines ToClose(std::int32_t operation) {
    if (operation == OrvOperation_FindDevice) {
        return {};
    }
    return operation == OrvOperation_FindServices ? Lines{CloseDevice}
                                                  : Lines{CloseService, CloseDevice};
}

const auto Connect = [] { return OrvDevice_Connect(Address); };

// What was closed, in this order, or tried to be.
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

TEST_F(ConnectTest, TakesTheStepsInOrderAndAsksForNoMore) {
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

using ConnectWait = WaitTest;

TEST_P(ConnectWait, IsGoneOnFromOnlyWhenItEndsWell) {
    if (ExpectAnswered(Address, Trace, Connect, {0, -1, true})) {
        EXPECT_EQ(OrvWorld_OpenObjects(Address), 2);
    } else {
        EXPECT_EQ(Closes(), ToClose(GetParam().first));
        ExpectNothingLeft();
    }
    EXPECT_EQ(Connect(), 0) << "after a late answer or a fault";
}

INSTANTIATE_TEST_SUITE_P(
    Endings, ConnectWait,
    testing::ValuesIn(Endings({OrvOperation_FindDevice, OrvOperation_FindServices,
                               OrvOperation_RequestAccess, OrvOperation_FindCharacteristics,
                               OrvOperation_WriteDescriptor})),
    EndingName);

TEST_F(ConnectTest, EachWaitHasALimitOfItsOwn) {
    if (OrvWorld_TimeIsSimulated() == 0) {
        GTEST_SKIP() << "ten seconds on real time";
    }
    for (std::int32_t i = OrvOperation_FindDevice; i <= OrvOperation_WriteDescriptor; ++i) {
        OrvWorld_Answer(Address, i, OrvManner_After, 1999);
    }
    ExpectTakes(5 * 1999, [] { EXPECT_EQ(Connect(), 0); });
}

TEST_F(ConnectTest, DevicesWithoutTheServiceOrCharacteristicAreRefused) {
    OrvWorld_RemoveServices(Address);
    ExpectCall(Connect, -1, {Trace, PlatformFailure});
    OrvWorld_AddService(Address, LinkCharacteristic);
    OrvWorld_AddCharacteristic(Address, 0, LinkCharacteristic);
    ExpectCall(Connect, -1, {Trace, PlatformFailure});  // another service
    const std::int32_t service = OrvWorld_AddService(Address, LinkService);
    OrvWorld_AddCharacteristic(Address, service, LinkService);
    ExpectCall(Connect, -1, {Trace, PlatformFailure});  // another characteristic
    EXPECT_EQ(Closes(), (Lines{CloseDevice, CloseDevice, CloseService, CloseDevice}));
    ExpectNothingLeft();
    OrvWorld_AddCharacteristic(Address, service, LinkCharacteristic);
    OrvWorld_AddService(Address, LinkService);
    EXPECT_EQ(Connect(), 0) << "the first service counts, further ones do not";
    OrvWorld_ForgetDevice(Address);
    EXPECT_EQ(Connect(), -1);
    EXPECT_EQ(OrvDevice_Flush(Address), 0) << "the link was lost";
}

// A close that fails during the cleanup is logged, and the rest of the cleanup still runs.
TEST_F(ConnectTest, FailingCloseIsLoggedAndTheRestStillClosed) {
    const std::tuple<Lines, std::int32_t, Lines> rows[] = {
        {{CloseService}, OrvManner_Status, {Trace, PlatformFailure}},
        {{CloseDevice}, OrvManner_Status, {Trace, PlatformFailure}},
        {{CloseService, CloseDevice}, OrvManner_Status, {Trace, PlatformFailure, PlatformFailure}},
        {{CloseService, CloseDevice},
         OrvManner_StartFails,
         {Trace, OutOfMemory, PlatformFailure, PlatformFailure}},
    };
    for (const auto& [failing, manner, lines] : rows) {
        OrvWorld_Reset(1);
        ASSERT_EQ(OrvWorld_AddDevice(Address, "ORV"), 0);
        OrvWorld_Answer(Address, OrvOperation_WriteDescriptor, manner,
                        manner == OrvManner_Status ? 1 : NoMemory);
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
    OrvWorld_Answer(Address, OrvOperation_FindCharacteristics, OrvManner_StartFails, Fails);
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

// The handler is registered before the link is in the table.
TEST_F(ConnectTest, NotificationsBeforeTheLinkIsOpenAreDropped) {
    OrvWorld_Answer(Address, OrvOperation_WriteDescriptor, OrvManner_After, 1000);
    OrvWorld_HoldTime();
    std::thread connecting([] { EXPECT_EQ(Connect(), 0); });
    EXPECT_EQ(OrvWorld_AwaitCalls(WriteDescriptor, 1), 0);
    Notify(Address, {1, 2, 3});
    EXPECT_EQ(LogLines(), (Lines{Trace, "OnDataReceived 176685338322165 3"}));
    OrvWorld_ReleaseTime();
    connecting.join();
    EXPECT_EQ(OrvDevice_Flush(Address), 0);
    Notify(Address, {4});
    EXPECT_EQ(OrvDevice_Flush(Address), 1);
}

}  // namespace
}  // namespace orv
