#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/thread_marks.h"

namespace orv::objects {

class CAPABILITY("mutex") Mutex {
  public:
    void Acquire() ACQUIRE() { mutex.lock(); }
    void Release() RELEASE() { mutex.unlock(); }

  private:
    friend class Condition;
    std::mutex mutex;
};

class SCOPED_CAPABILITY Lock {
  public:
    explicit Lock(Mutex& held) ACQUIRE(held) : mutex(&held) { held.Acquire(); }
    ~Lock() RELEASE() {
        if (mutex != nullptr) {
            mutex->Release();
        }
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void Release() RELEASE() {
        mutex->Release();
        mutex = nullptr;
    }

  private:
    Mutex* mutex;
};

class Condition {
  public:
    void NotifyOne() { changed.notify_one(); }
    void NotifyAll() { changed.notify_all(); }

    void Wait(Mutex& held) REQUIRES(held) {
        Adopted adopted(held);
        changed.wait(adopted.lock);
    }
    // WaitFor and WaitUntil return false after a timeout.
    template <typename Duration>
    bool WaitFor(Mutex& held, Duration duration) REQUIRES(held) {
        Adopted adopted(held);
        return changed.wait_for(adopted.lock, duration) == std::cv_status::no_timeout;
    }
    template <typename TimePoint>
    bool WaitUntil(Mutex& held, TimePoint moment) REQUIRES(held) {
        Adopted adopted(held);
        return changed.wait_until(adopted.lock, moment) == std::cv_status::no_timeout;
    }

  private:
    struct Adopted {
        explicit Adopted(Mutex& held) : lock(held.mutex, std::adopt_lock) {}
        ~Adopted() { lock.release(); }
        std::unique_lock<std::mutex> lock;
    };

    std::condition_variable changed;
};

}  // namespace orv::objects
