// In each run of an export or callback, one platform call or memory allocation fails. Platform
// calls fail once with a general error and once with a lack of memory. A failure must neither
// leak nor change links or sessions.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/reliability/fault_steps.h"

namespace {

// Number of allocations until one fails; 0 means that none fails. Counts the allocations of the
// test's thread or, if `othersFail` is true, of all other threads.
std::atomic<int> allocationsLeft{0};
thread_local bool isTester = false;
bool othersFail = false;

}  // namespace

// These operators would replace a sanitizer's allocator.
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
// If gcc inlined this, it would warn that free() receives memory of operator new.
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

class Faults : public WorldTest, public testing::WithParamInterface<Step> {
  protected:
    // Calls `arm` to set fault number `nth`. Then runs the step and checks the fault's effects.
    // Returns the result of `struck`: true if the fault occurred.
    bool Survives(int nth, const std::function<void()>& arm, const std::function<bool()>& struck,
                  const char* failureLine) {
        const Step& step = GetParam();
        step.arrange();
        const std::string before = State();
        const std::int32_t held = OrvWorld_HeldReferences();
        const std::int32_t open = OrvWorld_OpenObjects(Address);
        Logging_Enable();
        arm();
        const ResultCode result = step.run();
        const bool failed = struck();
        if (OrvWorld_ImproperHandlers() > 0) {
            // The runtime's query for a handler's marshaler failed. The call still succeeds.
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
            EXPECT_LE(OrvWorld_OpenObjects(Address), open) << "something was not closed";
        }
        EXPECT_EQ(failed ? step.run() : result, step.success) << "the next call must succeed";
        step.undo();
        return failed;
    }

    void ExpectFailure(int nth, ResultCode result, const char* failureLine) {
        const Step& step = GetParam();
        const auto point = static_cast<std::size_t>(nth - 1);
        if (othersFail) {
            // The allocation that failed may belong to the callback or to the simulated world.
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

// Makes allocations of other threads fail. Skipped with sanitizers, which have their own allocator.
class FaultsOfMemory : public WorldTest {
  protected:
    void SetUp() override {
        WorldTest::SetUp();
#ifdef ORV_SANITIZED
        GTEST_SKIP() << "a sanitizer's allocations cannot be made to fail";
#endif
        isTester = othersFail = true;
    }
    void TearDown() override {
        othersFail = false;
        WorldTest::TearDown();
    }
};

TEST_P(Faults, EveryPlatformCallCanFail) {
    GetParam().arrange();  // requests the factories, which later runs reuse
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

// A platform call returns success, but no object or value, and registers no handler.
TEST_P(Faults, EveryPlatformCallCanReturnNothing) {
    const Step& step = GetParam();
    constexpr std::int32_t SuccessWithoutEffect = 1;
    for (int n = 1;; ++n) {
        SCOPED_TRACE("platform call " + std::to_string(n));
        step.arrange();
        const std::int32_t held = OrvWorld_HeldReferences();
        Logging_Enable();
        OrvWorld_FailCall(n, SuccessWithoutEffect);
        const ResultCode result = step.run();
        if (OrvWorld_FailCall(0, 0) != 0) {
            EXPECT_EQ(result, step.success);
            step.undo();
            break;
        }
        EXPECT_TRUE(step.leaves.empty() ? result == -1 || result == step.success
                                        : result <= step.success);
        OrvWorld_Settle();
        if (result == -1) {
            EXPECT_LE(OrvWorld_HeldReferences(), held) << "a reference leaked";
        }
        WorldTest::TearDown();
        WorldTest::SetUp();
        ASSERT_FALSE(HasFailure());
    }
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

TEST_F(FaultsOfMemory, LongLineIsLostWithoutMemory) {
    const std::string text(100000, 'x');
    const auto append = [&text] { return Logging_AppendLine(text.data(), 100000); };
    othersFail = false;
    allocationsLeft = 1;
    EXPECT_EQ(append(), -1);
    EXPECT_EQ(allocationsLeft.exchange(0), 0) << "a long line needs memory";
    EXPECT_EQ(append(), 100014);
    EXPECT_EQ(LogLines(), Lines{text});
}

// The failure occurs while a notification adds a block to the link's queue.
TEST_F(FaultsOfMemory, BytesBeforeMemoryRanOutStay) {
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    std::vector<std::size_t> seen(5);
    for (int n = 1; seen[4] == 0; ++n) {
        const Bytes stream = Sequence(4082);
        // After this notification, one byte of the queue's last block is free.
        Notify(Address, Bytes(stream.begin(), stream.end() - 3));
        allocationsLeft = n;
        Notify(Address, Bytes(stream.end() - 3, stream.end()));
        const bool failed = allocationsLeft.exchange(0) == 0;
        Notify(Address, {0xEE});
        Bytes taken(5000);
        const ResultCode count = OrvDevice_Receive(Address, 5000, taken.data());
        ASSERT_TRUE(count >= 4080 && count <= 4083) << count;
        EXPECT_TRUE(std::equal(stream.begin(), stream.begin() + count - 1, taken.begin()));
        EXPECT_EQ(taken[static_cast<std::size_t>(count) - 1], 0xEE);
        ++seen[failed ? static_cast<std::size_t>(count - 4080) : 4];
    }
    EXPECT_GE(seen[1], 1u) << "the failure between the blocks was not met";
}

// The list allocates memory for the record and the hash bucket of a ninth device.
TEST_F(FaultsOfMemory, ListThatCannotGrowIsUnchanged) {
    constexpr BluetoothAddress Ninth = 9;
    for (BluetoothAddress address = 1; address <= Ninth; ++address) {
        AddDevice(address, "ORV-many");
    }
    ASSERT_EQ(OrvScanner_Initialize(), 0);
    int lost = 0;
    for (bool failed = true; failed;) {
        ASSERT_EQ(OrvScanner_Start(0), 0);
        for (BluetoothAddress address = 1; address < Ninth; ++address) {
            Advertise(address);
        }
        allocationsLeft = lost + 1;
        Advertise(Ninth);
        failed = allocationsLeft.exchange(0) == 0;
        lost += failed;
        ASSERT_EQ(OrvScanner_GetDeviceCount(0), failed ? 8 : 9);
        for (BluetoothAddress address = 1; address <= Ninth; ++address) {
            Advertise(address);
        }
        for (std::int32_t index = 0; index < 9; ++index) {
            DiscoveredDevice info;
            ASSERT_EQ(OrvScanner_GetDeviceInfo(0, index, &info), 0);
            ASSERT_EQ(info.address, static_cast<BluetoothAddress>(index + 1));
        }
        ASSERT_EQ(OrvScanner_GetDeviceCount(0), 9);
    }
    EXPECT_GE(lost, 2) << "the list did not have to grow";
}

INSTANTIATE_TEST_SUITE_P(Exports, Faults, testing::ValuesIn(Steps), RowName);

}  // namespace
}  // namespace orv
