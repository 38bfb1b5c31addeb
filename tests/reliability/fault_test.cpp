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

// Allocations of the thread that armed it: the n-th from now fails, once.
thread_local int allocationsLeft = 0;

void* Allocate(std::size_t size) {
    if (allocationsLeft > 0 && --allocationsLeft == 0) {
        return nullptr;
    }
    return std::malloc(size);
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* memory = Allocate(size)) {
        return memory;
    }
    throw std::bad_alloc();
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

namespace orv {
namespace {

// What is run with one fault. The state before and after tells whether a failure left traces.
struct Step {
    const char* name;
    const char* trace;              // its trace line
    std::function<void()> arrange;  // what must exist before
    std::function<ResultCode()> run;
    ResultCode success;
    std::function<void()> undo;  // after a success
    bool traceFirst = true;      // a callback reads what it traces, so a fault may precede it
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
};

void PrintTo(const Step& step, std::ostream* stream) {
    *stream << step.name;
}

class Faults : public WorldTest, public testing::WithParamInterface<Step> {
  protected:
    // Runs the step once with the fault that `arm` sets; false when it did not strike.
    bool Survives(const std::function<void()>& arm, const std::function<bool()>& struck,
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
        } else if (failed) {
            EXPECT_EQ(result, -1);
            EXPECT_EQ(LogLines(), (Lines{step.trace, failureLine}));
            EXPECT_EQ(State(), before) << "the failure left something behind";
            OrvWorld_Settle();
            EXPECT_LE(OrvWorld_HeldReferences(), held) << "a reference leaked";
            EXPECT_EQ(step.run(), step.success) << "the next call must succeed";
            step.undo();
        } else {
            EXPECT_EQ(result, step.success);
            step.undo();
        }
        return failed;
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
            if (!Survives([&] { OrvWorld_FailCall(n, kind.code); },
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
    int points = 0;
    for (int n = 1;; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        if (!Survives([&] { allocationsLeft = n; },
                      [] { return std::exchange(allocationsLeft, 0) == 0; },
                      "Exception: bad allocation")) {
            break;
        }
        ++points;
        ASSERT_FALSE(HasFailure());
    }
    std::printf("%s: %d allocations failed\n", GetParam().name, points);
}

INSTANTIATE_TEST_SUITE_P(Exports, Faults, testing::ValuesIn(Steps), RowName);

}  // namespace
}  // namespace orv
