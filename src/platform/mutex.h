#pragma once

#include "platform/system.h"
#include "platform/thread_marks.h"

namespace orv {

// A non-recursive mutex. It is constant-initialized and never destroyed. Locking cannot fail.
// The library has three mutexes, and no function holds two of them at once.
class CAPABILITY("mutex") Mutex {
  public:
    void Acquire() ACQUIRE() { system::AcquireLock(state); }
    void Release() RELEASE() { system::ReleaseLock(state); }

  private:
    system::LockState state;
};

class SCOPED_CAPABILITY Lock {
  public:
    explicit Lock(Mutex& held) ACQUIRE(held) : mutex(held) { mutex.Acquire(); }
    ~Lock() RELEASE() { mutex.Release(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    Mutex& mutex;
};

}  // namespace orv
