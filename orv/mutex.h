// A mutex, a lock and a condition variable, annotated for clang's thread safety analysis.
#pragma once

#include <condition_variable>
#include <mutex>

#include "src/platform/thread_marks.h"

namespace orv {

class CAPABILITY("mutex") Mutex {
  public:
    // std::condition_variable_any requires these names.
    void lock() ACQUIRE() { mutex.lock(); }
    void unlock() RELEASE() { mutex.unlock(); }

  private:
    std::mutex mutex;
};

class SCOPED_CAPABILITY Lock {
  public:
    explicit Lock(Mutex& held) ACQUIRE(held) : mutex(held) { mutex.lock(); }
    ~Lock() RELEASE() { mutex.unlock(); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

  private:
    Mutex& mutex;
};

// A wait releases the mutex and locks it again before it returns.
using Condition = std::condition_variable_any;

}  // namespace orv
