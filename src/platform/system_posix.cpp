#include <pthread.h>
#include <unistd.h>

#include "platform/failure.h"
#include "platform/system.h"

namespace orv::system {

namespace {

pthread_mutex_t* MutexIn(LockState& lock) {
    // In glibc, a mutex whose bytes are zero is initialized and unlocked.
    static_assert(sizeof(pthread_mutex_t) <= sizeof(LockState));
    return reinterpret_cast<pthread_mutex_t*>(lock.words);
}

}  // namespace

void AcquireLock(LockState& lock) noexcept {
    pthread_mutex_lock(MutexIn(lock));
}

void ReleaseLock(LockState& lock) noexcept {
    pthread_mutex_unlock(MutexIn(lock));
}

std::tm ToLocalTime(std::time_t seconds) {
    std::tm local{};
    localtime_r(&seconds, &local);
    return local;
}

std::uint64_t RandomBits() {
    std::uint64_t bits = 0;
    if (getentropy(&bits, sizeof bits) != 0) {
        RaiseFailure(E_FAIL);
    }
    return bits;
}

}  // namespace orv::system
