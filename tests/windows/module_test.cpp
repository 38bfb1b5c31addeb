// Tests that the library can be unloaded until it caches a factory or registers a handler, and that
// it does nothing at the end of the process.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "quelvixwinlib_simulated.h"
#include "windows/footprint.h"
#include "windows/library.h"

namespace orv {
namespace {

constexpr int Well = 42;
constexpr BluetoothAddress Address = 0xA0B1C2D3E4F5;
constexpr auto ClassNotRegistered = static_cast<std::int32_t>(0x80040154);
constexpr const char* FindsFactory = "DllGetActivationFactory";
constexpr int WarmUp = 20;  // repetitions before the measurement, because the system fills caches

// Calls that a host makes. `run` returns true if they had the expected results.
struct Use {
    const char* name;
    bool (*run)(const Library&);
};

const Use PassingUses[] = {
    {"Nothing", [](const Library&) { return true; }},
    {"RefusedCalls",
     [](const Library& library) {
         DiscoveredDevice info;
         return EXPORT(library, OrvScanner_GetDeviceCount)(0) == -1 &&
                EXPORT(library, OrvScanner_GetDeviceInfo)(0, 0, &info) == -1 &&
                EXPORT(library, OrvScanner_Start)(0) == -1 &&
                EXPORT(library, OrvScanner_Stop)(0) == -1 &&
                EXPORT(library, OrvScanner_Deinitialize)(0) == -1 &&
                EXPORT(library, OrvDevice_Receive)(Address, 0, nullptr) == -1 &&
                EXPORT(library, OrvDevice_Disconnect)(Address) == -1 &&
                EXPORT(library, OrvDevice_Flush)(Address) == -1;
     }},
    {"LogThatIsOff",
     [](const Library& library) {
         return EXPORT(library, Logging_Disable)() == 0 &&
                EXPORT(library, Logging_AppendLine)("lost", 4) == -1;
     }},
    {"PlatformRefuses",
     [](const Library& library) {
         OrvWorld_FailMember(FindsFactory, ClassNotRegistered);
         const ResultCode result = EXPORT(library, BluetoothAvailable)();
         OrvWorld_FailMember(FindsFactory, 0);
         return result == -1;
     }},
};

std::string UseName(const testing::TestParamInfo<Use>& row) {
    return row.param.name;
}

// If classes are registered, Wine's RoGetActivationFactory leaks a handle for each requested class.
bool ClassesAreRegistered() {
    const char* way = std::getenv("ORV_WAY");
    return way && std::string(way) == "registered";
}

class PassingUse : public testing::TestWithParam<Use> {};

TEST_P(PassingUse, ModuleUnloadsEachTimeAndLeaksNothing) {
    const auto cycle = [](int i) {
        const Library library;
        ASSERT_TRUE(library.module != nullptr) << "load " << i;
        ASSERT_TRUE(GetParam().run(library)) << "load " << i;
        library.Free();
        ASSERT_FALSE(Library::IsLoaded()) << "load " << i;
    };
    for (int i = 0; i < WarmUp; ++i) {
        ASSERT_NO_FATAL_FAILURE(cycle(i));
    }
    // A leak grows in every round. Wine's heap sometimes grows by 1160 bytes, but only once.
    Footprint before;
    Footprint after;
    for (int round = 0; round < 3; ++round) {
        before = Footprint::Now();
        for (int i = 0; i < Cycles(); ++i) {
            ASSERT_NO_FATAL_FAILURE(cycle(i));
        }
        after = Footprint::Now();
        if (ClassesAreRegistered()) {
            after.handles = before.handles;
        }
        if (after == before) {
            break;
        }
    }
    EXPECT_EQ(after, before) << Cycles() << " loads";
}

INSTANTIATE_TEST_SUITE_P(Uses, PassingUse, testing::ValuesIn(PassingUses), UseName);

void ArrangeWorld() {
    OrvWorld_Reset(0);
    OrvWorld_SetAdapter(1);
    OrvWorld_AddRadio(OrvRadioKind_Bluetooth, OrvRadioState_On);
    OrvWorld_AddDevice(Address, "ORV-0042");
}

bool Scan(const Library& library) {
    return EXPORT(library, OrvScanner_Initialize)() == 0 &&
           EXPORT(library, OrvScanner_Start)(0) == 0;
}

bool Connect(const Library& library) {
    return EXPORT(library, OrvDevice_Connect)(Address) == 0;
}

// After the calls in `run`, the library must stay loaded. `event` then sends an event, upon
// which the library calls the platform function `called`.
struct LateUse {
    const char* name;
    bool (*run)(const Library&);
    void (*event)();
    const char* called;
};

void Advertise() {
    OrvWorld_Advertise(Address, OrvPacket_Advertisement, 0);
}
void Notify() {
    const std::uint8_t byte = 7;
    OrvWorld_Notify(Address, &byte, 1, -1);
}
constexpr const char* ReadsAddress =
    "BluetoothLEAdvertisementReceivedEventArgs.get_BluetoothAddress";
constexpr const char* ReadsValue = "GattValueChangedEventArgs.get_CharacteristicValue";

const LateUse LateUses[] = {
    // The library must stay loaded: a second load would cache a factory and join the apartment
    // again.
    {"Factory",
     [](const Library& library) {
         const std::uint8_t byte = 0;
         return EXPORT(library, OrvDevice_Send)(Address, 1, &byte) == -1;
     },
     [] {}, nullptr},
    {"Scanner", Scan, Advertise, ReadsAddress},
    {"ScannerThatIsGone",
     [](const Library& library) {
         return Scan(library) && EXPORT(library, OrvScanner_Deinitialize)(0) == 0;
     },
     Advertise, ReadsAddress},
    {"Link", Connect, Notify, ReadsValue},
    {"LinkThatIsGone",
     [](const Library& library) {
         return Connect(library) && EXPORT(library, OrvDevice_Disconnect)(Address) == 0;
     },
     Notify, ReadsValue},
    {"WaitThatGaveUp",
     [](const Library& library) {
         OrvWorld_Answer(0, OrvOperation_FindAdapter, OrvAnswer_After, 2200);
         return EXPORT(library, BluetoothAvailable)() == -1;
     },
     [] { OrvWorld_PassTime(400); }, nullptr},
};

// Needs its own process, because the library stays loaded.
[[noreturn]] void UseLate(const LateUse& use) {
    ArrangeWorld();
    const Library library;
    if (!use.run(library)) {
        std::exit(1);
    }
    for (int i = 0; i < 5; ++i) {
        library.Free();
    }
    if (!Library::IsLoaded()) {
        std::exit(2);
    }
    const std::int32_t before = use.called ? OrvWorld_CallCount(use.called) : 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&use] { use.event(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    OrvWorld_Settle();
    const bool came = !use.called || OrvWorld_CallCount(use.called) >= before + 4;
    std::exit(came ? Well : 3);
}

class Unloaded : public testing::TestWithParam<LateUse> {};

TEST_P(Unloaded, StaysForLateEvents) {
    EXPECT_EXIT(UseLate(GetParam()), testing::ExitedWithCode(Well), "");
}

INSTANTIATE_TEST_SUITE_P(Uses, Unloaded, testing::ValuesIn(LateUses),
                         [](const auto& row) { return std::string(row.param.name); });

// Starts a host thread whose call never gets an answer.
void BlockIn(ResultCode (*call)(const Library&), const Library& library) {
    const std::int32_t before = OrvWorld_CallCount("IAsyncOperation.put_Completed");
    std::thread(call, library).detach();
    OrvWorld_AwaitCalls("IAsyncOperation.put_Completed", before + 1);
}

const Use LastUses[] = {
    {"Session", Scan},
    {"SessionWithEventsUnderWay",
     [](const Library& library) {
         OrvWorld_SetAdvertisingInterval(Address, 1);
         return Scan(library) && OrvWorld_AwaitCalls(ReadsAddress, 10) == 0;
     }},
    {"LinkWithBytes",
     [](const Library& library) { return Connect(library) && (Notify(), OrvWorld_Settle() == 0); }},
    {"PendingWait",
     [](const Library& library) {
         OrvWorld_Answer(0, OrvOperation_FindAdapter, OrvAnswer_Never, 1);
         BlockIn([](const Library& l) { return EXPORT(l, BluetoothAvailable)(); }, library);
         return true;
     }},
    {"PendingSendWithTheLogOnAndASession",
     [](const Library& library) {
         OrvWorld_SetAdvertisingInterval(Address, 1);
         OrvWorld_Answer(Address, OrvOperation_WriteValue, OrvAnswer_Never, 1);
         const bool well =
             EXPORT(library, Logging_Enable)() == 0 && Scan(library) && Connect(library);
         BlockIn([](const Library& l) { return EXPORT(l, OrvDevice_Send)(Address, 0, nullptr); },
                 library);
         return well;
     }},
};

using Ending = std::tuple<Use, bool>;
class ProcessEnd : public testing::TestWithParam<Ending> {};

TEST_P(ProcessEnd, IsOrderly) {
    const auto& [use, atOnce] = GetParam();
    const auto run = [&use = use, atOnce = atOnce] {
        ArrangeWorld();
        const Library library;
        const int code = use.run(library) ? Well : 1;
        atOnce ? ExitProcess(static_cast<UINT>(code)) : std::exit(code);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(Well), "");
}

std::string EndingName(const testing::TestParamInfo<Ending>& row) {
    return std::get<0>(row.param).name + std::string(std::get<1>(row.param) ? "AtOnce" : "ByExit");
}

INSTANTIATE_TEST_SUITE_P(Uses, ProcessEnd,
                         testing::Combine(testing::ValuesIn(LastUses), testing::Bool()),
                         EndingName);

}  // namespace
}  // namespace orv
