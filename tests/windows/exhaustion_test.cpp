// Makes memory allocations of the DLL fail: a single one, all of them, or all of them while a
// platform call fails, too. Each case runs in its own process, because it may crash, and begins on
// a new thread, because a thread's first exception needs memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <thread>

#include "tests/reliability/fault_steps.h"
#include "tests/support/world.h"
#include "windows/allocations.h"
#include "windows/footprint.h"

namespace orv {
namespace {

// The parameter `plan` selects what fails: one of these values, or n > 0 for the n-th allocation.
constexpr int Refused = -1;  // all allocations and the first platform call fail
constexpr int Every = 0;     // all allocations fail

enum Outcome { FailureMet = 42, NoFailureMet = 43 };

constexpr ResultCode LineLength = 100000;

void Nothing() {}
void EmptySession() {
    ASSERT_EQ(OrvScanner_Initialize(), 0);
}
void EndSession() {
    OrvScanner_Deinitialize(0);
}
void LinkWithByte() {
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    Notify(Address, {7}, OrvWorld_CallCount("GattCharacteristic.add_ValueChanged") - 1);
}
void Unlink() {
    OrvDevice_Disconnect(Address);
}

// Exports that do not call the Windows Runtime, in addition to the calls in fault_steps.cpp.
const Step OwnSteps[] = {
    {"GetDeviceCount", "OrvScanner_GetDeviceCount 0", EmptySession,
     [] { return OrvScanner_GetDeviceCount(0); }, 0, EndSession},
    {"GetDeviceInfo", "OrvScanner_GetDeviceInfo 0 0", EmptySession,
     [] {
         DiscoveredDevice info;
         return OrvScanner_GetDeviceInfo(0, 0, &info) + 1;
     },
     0, EndSession},
    {"Receive", "OrvDevice_Receive 176685338322165", LinkWithByte,
     [] {
         std::uint8_t byte;
         return OrvDevice_Receive(Address, 1, &byte) < 0 ? -1 : 0;
     },
     0, Unlink},
    {"Flush", "OrvDevice_Flush 176685338322165", LinkWithByte,
     [] { return OrvDevice_Flush(Address) < 0 ? -1 : 0; }, 0, Unlink},
    {"Enable", nullptr, Nothing, Logging_Enable, 0, Nothing},
    {"Disable", nullptr, Nothing, Logging_Disable, 0, [] { Logging_Enable(); }},
    {"AppendLine", nullptr, Nothing,
     [] { return Logging_AppendLine(std::string(LineLength, 'x').data(), LineLength); },
     LineLength + 14, Nothing},
};

std::vector<Step> AllSteps() {
    std::vector<Step> all = Steps;
    all.insert(all.end(), std::begin(OwnSteps), std::end(OwnSteps));
    return all;
}

bool IsCallback(const Step& step) {
    return !step.leaves.empty();
}

// Fails the test if the log has more than the step's own line (trace line or appended text) and one
// failure line.
void ExpectLines(const Step& step, bool refused) {
    Lines lines = LogLines();
    const auto dropOne = [&lines](auto matches) {
        const auto found = std::find_if(lines.begin(), lines.end(), matches);
        if (found != lines.end()) {
            lines.erase(found);
        }
    };
    dropOne([&](const std::string& line) {
        return step.trace ? line == step.trace : line.size() == LineLength;
    });
    dropOne([&](const std::string& line) {
        return line == OutOfMemory || (refused && line == PlatformFailure);
    });
    EXPECT_EQ(lines, Lines{});
}

// Runs the step with the failures of `plan`, and checks it. Returns true if a failure occurred.
bool Attempt(const Step& step, int plan) {
    step.arrange();
    const std::string before = State();
    OrvWorld_Settle();
    const std::int32_t held = OrvWorld_HeldReferences();
    const std::int32_t handlers = OrvWorld_HeldHandlers();
    const std::int32_t open = OrvWorld_OpenObjects(Address);
    Logging_Enable();

    OrvWorld_FailCall(plan == Refused ? 1 : 0, Fails);
    plan > 0 ? FailAllocation(plan) : FailAllocationsFrom(1);
    const ResultCode result = step.run();
    const bool memoryFailed = EndFailures() > 0;
    const bool refused = plan == Refused && OrvWorld_FailCall(0, 0) == 0;

    const bool failed = memoryFailed || refused;
    EXPECT_TRUE(result == step.success || (failed && result < step.success)) << result;
    ExpectLines(step, refused);
    OrvWorld_Settle();
    if (result == -1) {
        EXPECT_EQ(State(), before) << "the failure left something behind";
        EXPECT_LE(OrvWorld_HeldReferences(), held) << "a reference leaked";
        EXPECT_LE(OrvWorld_HeldHandlers(), handlers + (failed ? 2 : 0)) << "a handler leaked";
        EXPECT_LE(OrvWorld_OpenObjects(Address), open) << "something was not closed";
    }
    // If the failed call still held a lock, only calls on another thread would block.
    std::thread([&] {
        Logging_Enable();
        EXPECT_EQ(result == step.success && !IsCallback(step) ? result : step.run(), step.success)
            << "the next call must succeed";
    }).join();
    step.undo();
    return failed;
}

// Runs the step as the library's first use, so that its initialization lacks memory, too.
void AttemptFirstUse(const Step& step, int plan) {
    OrvWorld_FailCall(plan == Refused ? 1 : 0, Fails);
    FailAllocationsFrom(1);
    const ResultCode result = step.run();
    EndFailures();
    OrvWorld_FailCall(0, 0);
    EXPECT_LE(result, step.success);
    if (result == step.success) {
        step.undo();
    }
}

[[noreturn]] void RunAttempts(const Step& step, int plan) {
    EXPECT_GT(ReplaceAllocations(), 0);
    OrvWorld_Reset(0);
    OrvWorld_SetAdapter(1);
    OrvWorld_AddRadio(OrvRadioKind_Bluetooth, OrvRadioState_On);
    OrvWorld_AddDevice(Address, "ORV-0042");
    bool failed = false;
    bool finished = false;  // stays false if a failure ends the thread
    std::thread([&] {
        if (plan <= Every) {
            AttemptFirstUse(step, plan);
        }
        // The simulated world has four event threads, so the fifth attempt reuses one
        // that met a failure.
        for (int i = 0; i < 5; ++i) {
            failed = Attempt(step, plan) || failed;
        }
        finished = true;
    }).join();
    std::exit(testing::Test::HasFailure() || !finished ? 1 : failed ? FailureMet : NoFailureMet);
}

// Causes an exception in the library: a negative result means that it was handled. Does not use the
// simulated world, because the test counts the handles of the process.
DWORD WINAPI FailToAppend(void*) {
    static const char text[1000] = "";
    return Logging_AppendLine(text, sizeof text) == -1 ? FailureMet : 0;
}

// Uses CreateThread, because a std::thread frees memory after its end, which would be measured.
void FailOnThreads(int count) {
    for (int i = 0; i < count; ++i) {
        const HANDLE thread = CreateThread(nullptr, 0, FailToAppend, nullptr, 0, nullptr);
        WaitForSingleObject(thread, INFINITE);
        DWORD result = 0;
        GetExitCodeThread(thread, &result);
        ASSERT_EQ(result, static_cast<DWORD>(FailureMet)) << "thread " << i;
        CloseHandle(thread);
    }
}

TEST(Exhaustion, LeavesNothingOnThreads) {
    constexpr int WarmUp = 20;
    ASSERT_EQ(Logging_Enable(), 0);
    ReplaceAllocations();
    FailAllocationsFrom(1);
    ASSERT_NO_FATAL_FAILURE(FailOnThreads(WarmUp));
    const Footprint before = Footprint::Now();
    ASSERT_NO_FATAL_FAILURE(FailOnThreads(Cycles()));
    EXPECT_EQ(Footprint::Now(), before) << Cycles() << " threads";
    EXPECT_EQ(EndFailures(), WarmUp + Cycles());
}

class ExhaustionOf : public testing::TestWithParam<Step> {};

TEST_P(ExhaustionOf, FailsOnlyTheCall) {
    const Step& step = GetParam();
    bool met = true;
    const auto orderly = [&met](int code) {
        met = code == FailureMet;
        return met || code == NoFailureMet;
    };
    for (int plan = Refused; plan <= 100 && (met || plan <= 1); ++plan) {
        SCOPED_TRACE(plan == Refused ? "platform refuses, no memory"
                     : plan == Every ? "no memory"
                                     : "allocation " + std::to_string(plan));
        EXPECT_EXIT(RunAttempts(step, plan), orderly, "");
    }
}

INSTANTIATE_TEST_SUITE_P(Steps, ExhaustionOf, testing::ValuesIn(AllSteps()), RowName);

}  // namespace
}  // namespace orv
