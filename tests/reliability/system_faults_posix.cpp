// Runs every export and the library's two callbacks. In each run, a different operating system call
// of the library fails. The linker redirects these calls to this file.
#include <atomic>
#include <cstdlib>
#include <string_view>

#include "platform/failure.h"
#include "platform/loaded_module.h"
#include "platform/log_file.h"
#include "platform/runtime.h"
#include "platform/system.h"
#include "tests/reliability/fault_steps.h"

namespace orv {
namespace {

enum Call { None, ReadPath, Keep, Empty, Append, Random, CreateEvent };

std::atomic<int> callsLeft{0};
std::atomic<int> appends{0};
std::atomic<Call> failed{None};

bool Fail(Call call) {
    appends += call == Append;
    if (callsLeft == 0 || --callsLeft > 0) {
        return false;
    }
    failed = call;
    return true;
}

// Runs `body` while its `nth` system call fails. Returns the call that failed, or None.
template <typename Body>
Call FailDuring(int nth, Body&& body) {
    failed = None;
    appends = 0;
    callsLeft = nth;
    body();
    callsLeft = 0;
    return failed;
}

}  // namespace

extern "C" {
bool __real__ZN3orv6system14ReadModulePathERA4096_c(char (&path)[system::LongestPath]);
bool __wrap__ZN3orv6system14ReadModulePathERA4096_c(char (&path)[system::LongestPath]) {
    return !Fail(ReadPath) && __real__ZN3orv6system14ReadModulePathERA4096_c(path);
}

void __real__ZN3orv6system16KeepModuleLoadedEv();
void __wrap__ZN3orv6system16KeepModuleLoadedEv() {
    if (Fail(Keep)) {
        RaiseFailure(E_FAIL);
    }
    __real__ZN3orv6system16KeepModuleLoadedEv();
}

bool __real__ZN3orv6system9EmptyFileEPKc(const char* path);
bool __wrap__ZN3orv6system9EmptyFileEPKc(const char* path) {
    return !Fail(Empty) && __real__ZN3orv6system9EmptyFileEPKc(path);
}

using Text = std::string_view;
bool __real__ZN3orv6system12AppendToFileEPKcSt17basic_string_viewIcSt11char_traitsIcEE(const char*,
                                                                                       Text);
bool __wrap__ZN3orv6system12AppendToFileEPKcSt17basic_string_viewIcSt11char_traitsIcEE(
    const char* path, Text bytes) {
    return !Fail(Append) &&
           __real__ZN3orv6system12AppendToFileEPKcSt17basic_string_viewIcSt11char_traitsIcEE(path,
                                                                                             bytes);
}

std::uint64_t __real__ZN3orv6system10RandomBitsEv();
std::uint64_t __wrap__ZN3orv6system10RandomBitsEv() {
    if (Fail(Random)) {
        RaiseFailure(E_FAIL);
    }
    return __real__ZN3orv6system10RandomBitsEv();
}

HRESULT __real__ZN3orv7runtime17CreateKernelEventEPPv(runtime::EventHandle* event);
HRESULT __wrap__ZN3orv7runtime17CreateKernelEventEPPv(runtime::EventHandle* event) {
    return Fail(CreateEvent) ? E_FAIL : __real__ZN3orv7runtime17CreateKernelEventEPPv(event);
}
}

namespace {

class SystemFaults : public WorldTest, public testing::WithParamInterface<Step> {};

TEST_P(SystemFaults, LoseOneLineOrFailOneCall) {
    const Step& step = GetParam();
    int points = 0;
    Lines whole;
    for (int n = 0;; ++n) {  // in round 0, no call fails
        SCOPED_TRACE("call " + std::to_string(n));
        step.arrange();
        const std::string before = State();
        Logging_Enable();
        const std::int32_t held = OrvWorld_HeldReferences();
        ResultCode result = 0;
        const Call call = FailDuring(n, [&] { result = step.run(); });
        if (n == 0) {
            whole = LogLines();
        } else if (call == Append) {
            EXPECT_EQ(result, step.success) << "a lost line is no failure of the call";
            Lines left = whole;
            left.erase(left.begin() + (appends - 1));
            EXPECT_EQ(LogLines(), left);
        } else if (call == CreateEvent || call == Random) {
            EXPECT_EQ(result, -1);
            EXPECT_EQ(LogLines(), (Lines{step.trace, "Exception: unknown type"}));
            EXPECT_EQ(State(), before);
            OrvWorld_Settle();
            EXPECT_LE(OrvWorld_HeldReferences(), held) << "a reference leaked";
            result = step.run();
        }
        EXPECT_EQ(result, step.success);
        step.undo();
        if (n > 0 && call == None) {
            break;
        }
        points += n > 0;
        ASSERT_FALSE(HasFailure());
    }
    std::printf("%s: %d system calls failed\n", step.name, points);
}

INSTANTIATE_TEST_SUITE_P(Exports, SystemFaults, testing::ValuesIn(Steps), RowName);

using SessionFaults = WorldTest;

TEST_F(SessionFaults, EachSessionDrawsBothHalvesOfItsKey) {
    Logging_Disable();
    ASSERT_EQ(OrvScanner_Initialize(), 0);  // so KeepModuleLoaded is not called below
    for (const int half : {1, 2}) {
        EXPECT_EQ(FailDuring(half, [] { EXPECT_EQ(OrvScanner_Initialize(), -1); }), Random);
    }
}

using LogFaults = WorldTest;

TEST_F(LogFaults, LeaveTheLogOffOrLoseALine) {
    const auto enable = [] { EXPECT_EQ(Logging_Enable(), -1); };
    const auto append = [](ResultCode result) { EXPECT_EQ(Logging_AppendLine("x", 1), result); };
    for (const Call call : {ReadPath, Empty}) {
        EXPECT_EQ(FailDuring(call == ReadPath ? 1 : 2, enable), call);
        append(-1);
        EXPECT_EQ(Logging_Enable(), 0);
        append(15);
    }
    EXPECT_EQ(FailDuring(1, [&] { append(-1); }), Append);
    append(15);
    EXPECT_EQ(LogLines(), (Lines{"x", "x"}));
}

// Needs its own process, because handlers call KeepModuleLoaded only until it has succeeded once.
TEST(KeepingLoadedDeathTest, FailureFailsTheCallThatNeedsIt) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            // Joins the apartment before the fault, because joining calls KeepModuleLoaded, too.
            OrvDevice_Send(1, 0, nullptr);
            ResultCode first = 0;
            const Call call = FailDuring(1, [&] { first = OrvScanner_Initialize(); });
            std::fprintf(stderr, "%d then %d", call == Keep ? first : 1, OrvScanner_Initialize());
            std::exit(0);
        },
        testing::ExitedWithCode(0), "-1 then 0");
}

}  // namespace
}  // namespace orv
