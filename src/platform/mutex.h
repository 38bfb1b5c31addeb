// A mutex and its scoped lock, marked so that clang checks who holds what (-Wthread-safety).
#pragma once

#include <mutex>

#if defined(__clang__)
#define ORV_THREAD_MARK(mark) __attribute__((mark))
#else
#define ORV_THREAD_MARK(mark)
#endif

#define CAPABILITY(name) ORV_THREAD_MARK(capability(name))
#define SCOPED_CAPABILITY ORV_THREAD_MARK(scoped_lockable)
#define GUARDED_BY(mutex) ORV_THREAD_MARK(guarded_by(mutex))
#define REQUIRES(mutex) ORV_THREAD_MARK(requires_capability(mutex))
#define ACQUIRE(...) ORV_THREAD_MARK(acquire_capability(__VA_ARGS__))
#define RELEASE(...) ORV_THREAD_MARK(release_capability(__VA_ARGS__))
#define EXCLUDES(mutex) ORV_THREAD_MARK(locks_excluded(mutex))

namespace orv {

// Not re-entrant. Three exist in the whole library, and no function holds two of them.
class CAPABILITY("mutex") Mutex {
  public:
    void Acquire() ACQUIRE() { mutex.lock(); }
    void Release() RELEASE() { mutex.unlock(); }

  private:
    std::mutex mutex;
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
