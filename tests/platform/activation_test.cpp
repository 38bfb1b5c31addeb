// Tests how the library requests a factory and waits with a timeout. Uses internal functions,
// because exports request each factory only once in a process.
#include "platform/activation.h"

#include <gtest/gtest.h>

#include "platform/abi/bluetooth.h"
#include "platform/wait.h"
#include "quelvixwinlib_simulated.h"

namespace orv {
namespace {

constexpr const char* Runtime = "RoGetActivationFactory";
constexpr const char* Library = "DllGetActivationFactory";
constexpr const char* Apartment = "CoIncrementMTAUsage";

class ActivationTest : public testing::Test {
  protected:
    void SetUp() override { OrvWorld_Reset(1); }
    void TearDown() override {
        OrvWorld_Reset(1);
        EXPECT_EQ(OrvWorld_HeldReferences(), 0);
    }

    // Requests the adapter's factory with the test's own cache.
    HRESULT Find() {
        try {
            found = FindFactory(shared, BluetoothAdapter::Name, IidOf<IBluetoothAdapterStatics>);
            return S_OK;
        } catch (const PlatformFailure& failure) {
            return failure.code;
        }
    }

    std::string LibrariesAsked() {
        std::string all;
        char name[200];
        for (int i = 0; OrvWorld_CallAt(i, name, sizeof name) >= 0; ++i) {
            const std::string call = name;
            if (call.rfind(Library, 0) == 0) {
                all += call.substr(std::string(Library).size());
            }
        }
        return all;
    }

    SharedFactory shared{nullptr};
    Reference<IUnknown> found;
};

TEST_F(ActivationTest, RequestsAnAgileFactoryOnce) {
    EXPECT_EQ(Find(), S_OK);
    const IUnknown* first = found.Get();
    EXPECT_EQ(Find(), S_OK);
    EXPECT_EQ(found.Get(), first);
    EXPECT_EQ(OrvWorld_CallCount(Runtime), 1);
}

TEST_F(ActivationTest, RequestsANonAgileFactoryEachTime) {
    OrvWorld_SetFactoriesAgile(0);
    EXPECT_EQ(Find(), S_OK);
    EXPECT_EQ(Find(), S_OK);
    EXPECT_EQ(OrvWorld_CallCount(Runtime), 2);
    EXPECT_EQ(shared.load(), nullptr);
}

TEST_F(ActivationTest, JoinsTheApartmentAndRetriesOnAThreadWithoutOne) {
    OrvWorld_FailCall(1, CO_E_NOTINITIALIZED);
    EXPECT_EQ(Find(), S_OK);
    EXPECT_EQ(OrvWorld_CallCount(Runtime), 2);
    EXPECT_LE(OrvWorld_CallCount(Apartment), 1) << "one use for the whole process";
}

// Needs its own process, which has not yet joined the multithreaded apartment.
TEST(ApartmentDeathTest, FailedJoinIsRetriedAndCachesNothing) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            SharedFactory shared{nullptr};
            OrvWorld_Reset(1);
            OrvWorld_FailMember(Apartment, E_FAIL);
            OrvWorld_FailCall(1, CO_E_NOTINITIALIZED);
            for (int i = 0; i < 3; ++i) try {
                    FindFactory(shared, BluetoothAdapter::Name, IidOf<IBluetoothAdapterStatics>);
                } catch (const PlatformFailure& failure) {
                    if (i > 0 || failure.code != CO_E_NOTINITIALIZED)
                        std::exit(1);
                }
            const bool kept = shared.load() != nullptr;
            std::exit(OrvWorld_CallCount(Apartment) + (kept ? 100 : 40));
        },
        testing::ExitedWithCode(43), "");
}

TEST_F(ActivationTest, TriesTheNamespacesLibrariesLast) {
    OrvWorld_FailMember(Runtime, REGDB_E_CLASSNOTREG);
    EXPECT_EQ(Find(), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(LibrariesAsked(), " Windows.Devices.Bluetooth.dll Windows.Devices.dll Windows.dll");
    OrvWorld_SetActivationLibrary("Windows.Devices.dll");
    EXPECT_EQ(Find(), S_OK);
    EXPECT_EQ(OrvWorld_CallCount(Library), 5) << "asked on after an answer";
}

TEST_F(ActivationTest, ThrowsTheRuntimesCodeNotTheLibraries) {
    OrvWorld_FailMember(Runtime, E_FAIL);
    EXPECT_EQ(Find(), E_FAIL);
    OrvWorld_FailMember(Runtime, CO_E_NOTINITIALIZED);
    EXPECT_EQ(Find(), CO_E_NOTINITIALIZED);
}

Reference<IAsyncOperation<BluetoothAdapter>> StartQuery() {
    return Get(FactoryOf<BluetoothAdapter, IBluetoothAdapterStatics>(),
               &IBluetoothAdapterStatics::GetDefaultAsync);
}

TEST_F(ActivationTest, RecordOutlivesATimedOutWait) {
    OrvWorld_Answer(0, OrvOperation_FindAdapter, OrvAnswer_After, 2001);
    const std::int64_t start = OrvWorld_Now();
    EXPECT_EQ(WaitForCompletion(StartQuery(), 2000), AsyncStatus::Started);
    EXPECT_EQ(OrvWorld_Now() - start, 2000);
    EXPECT_EQ(OrvWorld_HeldHandlers(), 1);
    OrvWorld_PassTime(1);
    EXPECT_EQ(OrvWorld_HeldHandlers(), 0) << "the late completion ran and let go";
}

TEST_F(ActivationTest, WaitThatCannotBeSetUpThrowsAndLeaksNothing) {
    const auto query = StartQuery();
    OrvWorld_FailWaits(1, E_FAIL);
    EXPECT_THROW(WaitForCompletion(query, 2000), PlatformFailure);
    EXPECT_EQ(OrvWorld_HeldHandlers(), 0);
    EXPECT_EQ(WaitForCompletion(query, 2000), AsyncStatus::Completed);
    EXPECT_THROW(WaitForCompletion(query, 2000), PlatformFailure) << "a second handler";
}

}  // namespace
}  // namespace orv
