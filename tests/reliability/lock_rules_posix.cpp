// Watches the library's three locks in all tests of the program. A thread may hold only one lock.
// While a thread waits for the platform, it may hold only the links' lock. A violation ends the
// program.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "frame/diagnostics_log.h"
#include "link/connection_table.h"
#include "platform/runtime.h"
#include "quelvixwinlib.h"
#include "scanner/scanner_session.h"

namespace orv {
namespace {

std::atomic<bool> isWatching{false};  // true as soon as the locks exist
std::atomic<long> taken{0};
thread_local const char* held = nullptr;

const char* NameOf(const void* mutex) {
    return mutex == &diagnosticsLog.mutex    ? "the log's lock"
           : mutex == &scannerMutex          ? "the scanner's lock"
           : mutex == &connectionTable.mutex ? "the links' lock"
                                             : nullptr;
}

void Forbid(const char* what, bool forbidden) {
    if (forbidden) {
        std::fprintf(stderr, "%s under %s\n", what, held);
        std::abort();
    }
}

void Take(const void* mutex) {
    if (const char* name = isWatching ? NameOf(mutex) : nullptr) {
        Forbid(name, held != nullptr);
        held = name;
        ++taken;
    }
}

void GiveBack(const void* mutex) {
    if (held != nullptr && NameOf(mutex) == held) {
        held = nullptr;
    }
}

class Watch : public testing::Environment {
    void SetUp() override { isWatching = true; }
    void TearDown() override {
        std::printf("%ld times a lock was taken by the rules\n", taken.load());
    }
};
const auto* const watch = testing::AddGlobalTestEnvironment(new Watch);

}  // namespace

extern "C" {
int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    Take(mutex);
    return __real_pthread_mutex_lock(mutex);
}

int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);
int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    GiveBack(mutex);
    return __real_pthread_mutex_unlock(mutex);
}

void __real__ZN3orv7runtime18WaitForKernelEventEPvj(runtime::EventHandle event, UINT32 limitMs);
void __wrap__ZN3orv7runtime18WaitForKernelEventEPvj(runtime::EventHandle event, UINT32 limitMs) {
    Forbid("a wait", held != nullptr && held != NameOf(&connectionTable.mutex));
    __real__ZN3orv7runtime18WaitForKernelEventEPvj(event, limitMs);
}
}

namespace {

TEST(LockRulesDeathTest, AreWatched) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            const Lock first(scannerMutex);
            const Lock second(connectionTable.mutex);
        },
        "the links' lock under the scanner's lock");
    EXPECT_DEATH(
        {
            Logging_Enable();
            const Lock lock(connectionTable.mutex);
            Logging_AppendLine("x", 1);
        },
        "the log's lock under the links' lock");
    EXPECT_DEATH(
        {
            const Lock lock(scannerMutex);
            runtime::WaitForKernelEvent(nullptr, 0);
        },
        "a wait under the scanner's lock");
}

}  // namespace
}  // namespace orv
