// The world's clock: simulated or real time, what is due on it, and the waits that end by it.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>

#include "runtimes/simulated/delivery.h"

namespace orv::simulated {

using Duration = std::chrono::nanoseconds;

// A kernel event, and the threads that sleep on one. Guarded by the clock's mutex.
struct KernelEvent {
    bool set = false;
};

// Simulated time stands still except in two places: `Advance`, which jumps when the library can do
// nothing but wait, and `Pass`. It is one ever growing time for the whole process, so that a wait
// which goes on through a new beginning keeps its end; Now is counted from the latest beginning.
//
// Functions that take a guard need the mutex held. None calls a handler or releases a foreign
// object while it is.
class Clock {
  public:
    using Action = std::function<void(Guard&)>;  // runs with the mutex held

    explicit Clock(std::mutex& mutexOfWorld);

    // What was due and no longer is, to be destroyed without the mutex.
    struct Timer {
        std::unique_ptr<Task> task;
        Action action;
    };
    using Timers = std::multimap<Duration, Timer>;

    // A new beginning at 0. Nothing is due any more.
    Timers Begin(Guard& guard, bool simulatedTime);
    Duration Now(Guard& guard) const { return Time(guard) - beginning; }
    bool IsSimulated(Guard&) const { return simulated; }

    // Posts the task, or runs the action, when `delay` has passed. Throws without effect.
    void After(Guard& guard, Duration delay, std::unique_ptr<Task> task);
    void After(Guard& guard, Duration delay, Action action);
    void Post(Guard& guard, std::unique_ptr<Task> task);

    void Hold(Guard& guard, bool hold);
    // Both wait for tasks, so no thread of the world may call them: false then, and when nothing
    // has moved for 30 s of real time.
    bool Pass(Guard& guard, Duration duration);
    bool Settle(Guard& guard);

    // Until so many threads are in a wait; false after 30 s of real time.
    bool AwaitWaits(Guard& guard, int count);

    // Since 1970. Simulated: the real time of the latest beginning, and what has passed since.
    std::chrono::milliseconds SystemTime() const;
    static std::chrono::milliseconds RealSystemTime();

    void Wait(KernelEvent& event, std::chrono::milliseconds limit);
    void Set(KernelEvent& event);

  private:
    // A host thread in a wait; it lives on that thread's stack.
    struct Waiter {
        KernelEvent* event;
        Duration deadline;
        bool expired = false;
        std::condition_variable changed;
        Waiter* next = nullptr;

        // It will go on by itself, and does not hold time any longer.
        bool Leaves() const { return expired || event->set; }
    };

    Duration Time(Guard& guard) const;
    void MoveTo(Guard& guard, Duration moment);
    void FireDue(Guard& guard);
    void Fire(Guard& guard, Timer timer);
    void Advance(Guard& guard);
    bool IsIdle(Guard& guard) const;
    bool SomeoneLeaves() const;
    bool ExpireDue(Guard& guard);
    Duration NextMoment(Duration last) const;
    template <typename Condition>
    bool AwaitProgress(Guard& guard, int patience, Condition condition);
    void Remove(Waiter& waiter);
    void WakeAll();
    void StartTimerThread();
    [[noreturn]] void RunTimerThread();

    std::mutex& mutex;
    Delivery delivery;
    std::condition_variable moved;          // a task is done, a wait has ended
    std::condition_variable timersChanged;  // for the timer thread
    // All guarded by the mutex.
    Timers timers;
    Waiter* waiters = nullptr;
    bool simulated = false;
    bool held = false;
    bool timerThreadRuns = false;
    Duration beginning{0};
    // The time that has passed; on real time, until `realStart`.
    Duration passed{0};
    std::chrono::steady_clock::time_point realStart;
    Duration systemTimeAtBeginning{0};
    // Read without the mutex, so that writing a log line orders nothing. RealTime on real time.
    static constexpr Duration RealTime{-1};
    std::atomic<Duration> systemTime{RealTime};
};

}  // namespace orv::simulated
