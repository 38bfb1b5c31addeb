// Fails each call that an export or a callback makes into the platform: the first, then the second,
// then the third, until a run is clean; with a failing code and with memory exhausted. Likewise
// each allocation. After every single failure the same must hold.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

#include "tests/support/world.h"

namespace {

// The n-th allocation from now fails, once: of the thread that armed it, or of all others.
std::atomic<int> allocationsLeft{0};
thread_local bool isTester = false;
bool othersFail = false;

}  // namespace

// A sanitizer brings an allocator of its own.
#ifndef ORV_SANITIZED
void* operator new(std::size_t size) {
    const bool fails = allocationsLeft > 0 && isTester != othersFail && --allocationsLeft == 0;
    void* memory = fails ? nullptr : std::malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
// Not inlined: gcc would see free() meet memory of an operator new and warn.
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}
#endif

namespace orv {
namespace {

// What is run with one fault. The state before and after tells whether a failure left traces. A
// callback returns nothing; how much of its event arrived is taken for its result.
struct Step {
    const char* name;
    const char* trace;              // its trace line
    std::function<void()> arrange;  // what must exist before
    std::function<ResultCode()> run;
    ResultCode success;
    std::function<void()> undo;  // after a success
    // Of a callback only: the platform calls in whose place the n-th fails, by what then arrives. A
    // fault of the first `untraced` comes before the trace line.
    int untraced = 0;
    std::vector<ResultCode> leaves = {};
};

std::string Number(BluetoothAddress number) {
    return std::to_string(number);
}

// Links, sessions and bytes as the host can see them.
std::string State() {
    std::string state;
    for (std::int32_t id = 0; id < 3; ++id) {
        state += Number(static_cast<BluetoothAddress>(OrvScanner_GetDeviceCount(id) + 1)) + ",";
    }
    std::uint8_t bytes[64];
    const ResultCode queued = OrvDevice_Receive(Address, 0, bytes);
    return state + (queued < 0 ? "no link" : "link");
}

void Nothing() {}
void Link() {
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
}
void Unlink() {
    ASSERT_EQ(OrvDevice_Disconnect(Address), 0);
}
void Session() {
    ASSERT_EQ(OrvScanner_Initialize(), 0);
}
void EndSession() {
    ASSERT_EQ(OrvScanner_Deinitialize(0), 0);
}

constexpr std::uint8_t Block[] = {1, 2, 3};

// A session that scans, and a device that has all values in its scan response.
void Scan() {
    Session();
    ASSERT_EQ(OrvScanner_Start(0), 0);
    OrvWorld_SetSignal(Address, -60);
    OrvWorld_ClearSections(Address, OrvPacket_ScanResponse);
    for (const Bytes& section :
         {Bytes{0x00, 0x05, 1}, Bytes{0x30, 0x11, 2}, Bytes{0x18, 0x11, 3}}) {
        OrvWorld_AddSection(Address, OrvPacket_ScanResponse, 0x16, section.data(), 3);
    }
}
void ScanAndList() {
    Scan();
    Advertise(Address);
    OrvWorld_SetSignal(Address, -50);
}

// The event's source that was registered with last: those of earlier rounds are still there.
std::int32_t Youngest(const char* registration) {
    return OrvWorld_CallCount(registration) - 1;
}

// Sends one packet; how many of the record's fields have then arrived.
template <std::int32_t Packet>
ResultCode Hear() {
    Advertise(Address, Packet, Youngest("BluetoothLEAdvertisementWatcher.add_Received"));
    Logging_Disable();
    DiscoveredDevice info = {};
    OrvScanner_GetDeviceInfo(0, 0, &info);
    return (info.address == Address) + (info.rssi == -50) + (info.value0500 == 1) +
           (info.value1130 == 2) + (info.data1118[0] == 3);
}
ResultCode TakeNotification() {
    Notify(Address, {1, 2, 3}, Youngest("GattCharacteristic.add_ValueChanged"));
    Logging_Disable();
    std::uint8_t bytes[4];
    const ResultCode count = OrvDevice_Receive(Address, 4, bytes);
    EXPECT_TRUE(std::equal(bytes, bytes + count, Block));
    return count;
}

const Step Steps[] = {
    {"BluetoothAvailable", "BluetoothAvailable", Nothing, BluetoothAvailable, 0, Nothing},
    {"Initialize", "OrvScanner_Initialize", Nothing, OrvScanner_Initialize, 0, EndSession},
    {"Start", "OrvScanner_Start 0", Session, [] { return OrvScanner_Start(0); }, 0, EndSession},
    {"Stop", "OrvScanner_Stop 0", Session, [] { return OrvScanner_Stop(0); }, 0, EndSession},
    {"Deinitialize", "OrvScanner_Deinitialize 0", Session,
     [] { return OrvScanner_Deinitialize(0); }, 0, Nothing},
    {"Connect", "OrvDevice_Connect 176685338322165", Nothing,
     [] { return OrvDevice_Connect(Address); }, 0, Unlink},
    {"Disconnect", "OrvDevice_Disconnect 176685338322165", Link,
     [] { return OrvDevice_Disconnect(Address); }, 0, Nothing},
    {"Send", "OrvDevice_Send 176685338322165 3", Link,
     [] { return OrvDevice_Send(Address, 3, Block); }, 3, Unlink},
    {"NewDevice",
     "OnAdvertisementReceived 176685338322165 <ORV-0042> -60",
     Scan,
     Hear<0>,
     1,
     EndSession,
     4,
     {0, 0, 0, 0}},
    {"ListedDevice",
     "OnAdvertisementReceived 176685338322165 <ORV-0042> -50",
     ScanAndList,
     Hear<0>,
     2,
     EndSession,
     4,
     {1, 1, 1, 1, 2, 2}},
    {"ScanResponse",
     "OnAdvertisementReceived 176685338322165 <> -50",
     ScanAndList,
     Hear<1>,
     5,
     EndSession,
     4,
     {1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 4, 4, 4, 4, 4}},
    {"Notification",
     "OnDataReceived 176685338322165 3",
     Link,
     TakeNotification,
     3,
     Unlink,
     7,
     {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 2, 2, 3}},
};

void PrintTo(const Step& step, std::ostream* stream) {
    *stream << step.name;
}

class Faults : public WorldTest, public testing::WithParamInterface<Step> {
  protected:
    // Runs the step once with the `nth` fault, that `arm` sets; false when it did not strike.
    bool Survives(int nth, const std::function<void()>& arm, const std::function<bool()>& struck,
                  const char* failureLine) {
        const Step& step = GetParam();
        step.arrange();
        const std::string before = State();
        const std::int32_t held = OrvWorld_HeldReferences();
        Logging_Enable();
        arm();
        const ResultCode result = step.run();
        const bool failed = struck();
        if (OrvWorld_ImproperHandlers() > 0) {
            // It struck while a handler answered for its marshaler: the runtime's to judge.
            EXPECT_EQ(result, step.success);
            step.undo();
            SetUp();
            return failed;
        }
        if (failed) {
            ExpectFailure(nth, result, failureLine);
            EXPECT_TRUE(othersFail || State() == before) << "the failure left something behind";
            OrvWorld_Settle();
            EXPECT_LE(OrvWorld_HeldReferences(), held) << "a reference leaked";
        }
        EXPECT_EQ(failed ? step.run() : result, step.success) << "the next call must succeed";
        step.undo();
        return failed;
    }

    void ExpectFailure(int nth, ResultCode result, const char* failureLine) {
        const Step& step = GetParam();
        const auto point = static_cast<std::size_t>(nth - 1);
        if (othersFail) {
            // An allocation of the callback, or of the world around it.
            EXPECT_LE(result, step.success);
            for (const std::string& line : LogLines()) {
                EXPECT_TRUE(line == step.trace || line == failureLine) << line;
            }
        } else if (step.leaves.empty()) {
            EXPECT_EQ(result, -1);
            EXPECT_EQ(LogLines(), (Lines{step.trace, failureLine}));
        } else {
            EXPECT_EQ(result, point < step.leaves.size() ? step.leaves[point] : -1);
            EXPECT_EQ(LogLines(),
                      nth <= step.untraced ? Lines{failureLine} : (Lines{step.trace, failureLine}));
        }
    }
};

TEST_P(Faults, EveryPlatformCallCanFail) {
    GetParam().arrange();  // looks the factories up, which happens once in a process
    EXPECT_EQ(GetParam().run(), GetParam().success);
    GetParam().undo();
    struct Code {
        std::int32_t code;
        const char* line;
    };
    int points = 0;
    for (const Code& kind :
         {Code{Fails, "Exception: unknown type"}, Code{NoMemory, "Exception: bad allocation"}}) {
        for (int n = 1;; ++n) {
            SCOPED_TRACE("platform call " + std::to_string(n));
            if (!Survives(
                    n, [&] { OrvWorld_FailCall(n, kind.code); },
                    [] { return OrvWorld_FailCall(0, 0) == 0; }, kind.line)) {
                break;
            }
            ++points;
            ASSERT_FALSE(HasFailure());
        }
    }
    RecordProperty("platform_calls_failed", points);
    std::printf("%s: %d platform calls failed\n", GetParam().name, points);
}

TEST_P(Faults, EveryAllocationCanFail) {
#ifdef ORV_SANITIZED
    GTEST_SKIP() << "a sanitizer's allocations cannot be made to fail";
#endif
    isTester = true;
    othersFail = !GetParam().leaves.empty();
    int points = 0;
    for (int n = 1;; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        if (!Survives(
                n, [&] { allocationsLeft = n; }, [] { return allocationsLeft.exchange(0) == 0; },
                "Exception: bad allocation")) {
            break;
        }
        ++points;
        ASSERT_FALSE(HasFailure());
    }
    othersFail = false;
    std::printf("%s: %d allocations failed\n", GetParam().name, points);
}

INSTANTIATE_TEST_SUITE_P(Exports, Faults, testing::ValuesIn(Steps), RowName);

}  // namespace
}  // namespace orv
