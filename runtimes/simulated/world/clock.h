#pragma once

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdint>
#include <map>
#include <thread>

#include "runtimes/simulated/world/delivery_threads.h"
#include "runtimes/simulated/world/duration.h"

namespace orv::simulated {

struct KernelEvent {
    bool set GUARDED_BY(worldMutex) = false;
};

// Simulated time moves forward in `Pass`, and in `Advance` while the library does nothing but wait.
// A reset changes only the result of `Now`, so a wait that lasts across a reset keeps its deadline.
//
// No function calls a handler or releases an object of the library while worldMutex is held.
class Clock {
  public:
    using Action = std::function<void()>;  // called with the world's mutex held

    Clock();

    // A scheduled event. Destroy a cancelled event while worldMutex is not held, because it may own
    // handlers of the library.
    struct Timer {
        std::unique_ptr<Task> task;
        Action action;
    };
    using Timers = std::multimap<Duration, Timer>;

    // Resets the time to 0, cancels the scheduled events and returns them.
    Timers Begin(bool simulatedTime) REQUIRES(worldMutex);
    Duration Now() const REQUIRES(worldMutex) { return Time() - beginning; }
    bool IsSimulated() const REQUIRES(worldMutex) { return simulated; }

    // Posts the task or calls the action after `delay`. If After throws, it schedules nothing.
    void After(Duration delay, std::unique_ptr<Task> task) REQUIRES(worldMutex);
    void After(Duration delay, Action action) REQUIRES(worldMutex);
    void Post(std::unique_ptr<Task> task) REQUIRES(worldMutex);

    void Hold(bool hold) REQUIRES(worldMutex);
    // Pass moves the time forward; Settle waits until all tasks have finished. Both return false on
    // a thread of the world, which would wait for itself, and after 30 s in which no task finishes.
    bool Pass(Duration duration) REQUIRES(worldMutex);
    bool Settle() REQUIRES(worldMutex);

    // Waits until `count` threads wait for an event. Returns false after 30 s of real time.
    bool AwaitWaits(int count) REQUIRES(worldMutex);

    // Returns the time since 1970. Simulated time starts at the real time of the reset.
    std::chrono::milliseconds SystemTime() const;
    static std::chrono::milliseconds RealSystemTime();

    void Wait(KernelEvent& event, std::chrono::milliseconds limit);
    void Set(KernelEvent& event);

  private:
    // A host thread that waits for an event. This object is on the thread's stack.
    struct Waiter {
        KernelEvent* event;
        Duration deadline GUARDED_BY(worldMutex){0};
        bool expired GUARDED_BY(worldMutex) = false;
        Condition changed;
        Waiter* next GUARDED_BY(worldMutex) = nullptr;

        // Returns whether the thread can continue, in which case time must not jump.
        bool CanResume() const REQUIRES(worldMutex) { return expired || event->set; }
    };

    Duration Time() const REQUIRES(worldMutex);
    void MoveTo(Duration moment) REQUIRES(worldMutex);
    // Fires the scheduled events whose time is not later than `moment`.
    void FireDue(Duration moment) REQUIRES(worldMutex);
    void Fire(Timer timer) REQUIRES(worldMutex);
    void Advance() REQUIRES(worldMutex);
    bool IsIdle() const REQUIRES(worldMutex);
    bool MayJump() const REQUIRES(worldMutex);
    // Waits until the answers that were due before the waiter's deadline are delivered. For real
    // time: after a stall of the machine, such an answer and the timeout are both overdue, and the
    // answer must come first.
    void AwaitDueAnswers(const Waiter& waiter) REQUIRES(worldMutex);
    // Waits briefly for a wakeup. After several such waits in which no task finishes, marks the
    // unfinished events as blocked.
    void LookAtEvents(Waiter& waiter, int& looks) REQUIRES(worldMutex);
    bool SomeoneCanResume() const REQUIRES(worldMutex);
    bool ExpireDue() REQUIRES(worldMutex);
    Duration NextMoment(Duration last) const REQUIRES(worldMutex);
    template <typename Claim>
    bool AwaitProgress(int patience, Claim claim) REQUIRES(worldMutex);
    void Remove(Waiter& waiter) REQUIRES(worldMutex);
    void WakeAll() REQUIRES(worldMutex);
    void StartTimerThread() REQUIRES(worldMutex);
    [[noreturn]] void RunTimerThread();

    DeliveryThreads delivery;
    Condition moved;  // signalled when a task or a wait ends, or a wait begins
    Condition timersChanged;
    Timers timers GUARDED_BY(worldMutex);
    Waiter* waiters GUARDED_BY(worldMutex) = nullptr;
    bool simulated GUARDED_BY(worldMutex) = false;
    bool held GUARDED_BY(worldMutex) = false;
    std::thread timerThread GUARDED_BY(worldMutex);  // runs until the process ends
    // Number of finished tasks when the unfinished events were found to be blocked. The events
    // count as blocked until another task finishes.
    unsigned long finishedWhenBlocked GUARDED_BY(worldMutex) = ULONG_MAX;
    Duration beginning GUARDED_BY(worldMutex){0};
    // The current time if time is simulated, otherwise the time at `realStart`.
    Duration passed GUARDED_BY(worldMutex){0};
    std::chrono::steady_clock::time_point realStart GUARDED_BY(worldMutex);
    Duration systemTimeAtBeginning GUARDED_BY(worldMutex){0};
    // `systemTime` is read without the mutex, so that writing a log line synchronizes no threads.
    // It is RealTime if time is not simulated.
    static constexpr Duration RealTime{-1};
    std::atomic<Duration> systemTime{RealTime};
};

}  // namespace orv::simulated
