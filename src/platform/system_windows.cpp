// The system's header comes last: its macros have names that our headers declare.
// clang-format off
#define _CRT_RAND_S  // makes <cstdlib> declare rand_s, which needs only msvcrt.dll
#include "platform/system.h"

#include <cstdlib>

#include "platform/failure.h"
#include <windows.h>
// clang-format on

namespace orv::system {

namespace {

SRWLOCK* SlimLockIn(LockState& lock) {
    static_assert(sizeof(SRWLOCK) <= sizeof(LockState));
    return reinterpret_cast<SRWLOCK*>(lock.words);
}

}  // namespace

void AcquireLock(LockState& lock) noexcept {
    AcquireSRWLockExclusive(SlimLockIn(lock));
}

void ReleaseLock(LockState& lock) noexcept {
    ReleaseSRWLockExclusive(SlimLockIn(lock));
}

std::tm ToLocalTime(std::time_t seconds) {
    std::tm local{};
    const __time64_t wide = seconds;
    _localtime64_s(&local, &wide);
    return local;
}

std::uint64_t RandomBits() {
    unsigned int high = 0;
    unsigned int low = 0;
    if (rand_s(&high) != 0 || rand_s(&low) != 0) {
        RaiseFailure(E_FAIL);
    }
    return std::uint64_t{high} << 32 | low;
}

}  // namespace orv::system
