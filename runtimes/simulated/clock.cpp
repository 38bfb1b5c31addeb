// The world's clock.
#include "runtimes/simulated/clock.h"

#include <algorithm>

#include "runtimes/simulated/module.h"

namespace orv::simulated {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// How often it is looked whether anything has moved, before something counts as blocked for good.
// Looks are counted instead of time, because a busy machine may take its time between them.
constexpr milliseconds BetweenLooks{100};
constexpr int Patience = 300;
// The same while a wait of the library goes on, because the lock that it keeps may be what blocks.
constexpr int PatienceDuringWaits = 10;

}  // namespace

Clock::Clock(std::mutex& mutexOfWorld)
    : mutex(mutexOfWorld),
      delivery(mutexOfWorld,
               [this](Guard& guard) {
                   moved.notify_all();
                   Advance(guard);
               }),
      realStart(steady_clock::now()) {}

Duration Clock::Time(Guard&) const {
    return simulated ? passed : passed + (steady_clock::now() - realStart);
}

void Clock::MoveTo(Guard&, Duration moment) {
    passed = std::max(passed, moment);
    systemTime = systemTimeAtBeginning + (passed - beginning);
}

milliseconds Clock::RealSystemTime() {
    return std::chrono::duration_cast<milliseconds>(
        std::chrono::system_clock::now().time_since_epoch());
}

milliseconds Clock::SystemTime() const {
    const Duration time = systemTime;
    return time == RealTime ? RealSystemTime() : std::chrono::duration_cast<milliseconds>(time);
}

Clock::Timers Clock::Begin(Guard& guard, bool simulatedTime) {
    passed = Time(guard);
    beginning = passed;
    realStart = steady_clock::now();
    simulated = simulatedTime;
    systemTimeAtBeginning = RealSystemTime();
    systemTime = simulated ? systemTimeAtBeginning : RealTime;
    held = false;
    Timers forgotten;
    forgotten.swap(timers);
    WakeAll();
    return forgotten;
}

void Clock::Post(Guard& guard, std::unique_ptr<Task> task) {
    delivery.Prepare(guard, task->lane);
    delivery.Post(guard, std::move(task));
}

void Clock::After(Guard& guard, Duration delay, std::unique_ptr<Task> task) {
    if (delay <= Duration::zero()) {
        Post(guard, std::move(task));
        return;
    }
    delivery.Prepare(guard, task->lane);
    StartTimerThread();
    timers.emplace(Time(guard) + delay, Timer{std::move(task), nullptr});
    timersChanged.notify_one();
}

void Clock::After(Guard& guard, Duration delay, Action action) {
    StartTimerThread();
    timers.emplace(Time(guard) + delay, Timer{nullptr, std::move(action)});
    timersChanged.notify_one();
}

void Clock::Fire(Guard& guard, Timer timer) {
    if (timer.task) {
        delivery.Post(guard, std::move(timer.task));
        return;
    }
    try {
        timer.action(guard);
    } catch (...) {
        // Out of memory on the world's own account.
    }
}

void Clock::FireDue(Guard& guard) {
    while (!timers.empty() && timers.begin()->first <= Time(guard)) {
        Timer timer = std::move(timers.begin()->second);
        timers.erase(timers.begin());
        Fire(guard, std::move(timer));
    }
}

// ------------------------------------------------------------------------------------- the waits

void Clock::Wait(KernelEvent& event, milliseconds limit) {
    Guard guard(mutex);
    const steady_clock::time_point realDeadline = steady_clock::now() + limit;
    Waiter waiter;
    waiter.event = &event;
    waiter.deadline = Time(guard) + limit;
    waiter.next = waiters;
    waiters = &waiter;
    moved.notify_all();
    for (;;) {
        // Anew after each awakening: the kind of time may have changed meanwhile.
        Advance(guard);
        if (waiter.Leaves()) {
            break;
        }
        if (simulated) {
            waiter.changed.wait(guard);
        } else if (waiter.changed.wait_until(guard, realDeadline) == std::cv_status::timeout) {
            waiter.expired = !simulated;
        }
    }
    Remove(waiter);
    moved.notify_all();
    Advance(guard);
}

bool Clock::AwaitWaits(Guard& guard, int count) {
    return moved.wait_for(guard, Patience * BetweenLooks, [&] {
        int there = 0;
        for (const Waiter* waiter = waiters; waiter != nullptr; waiter = waiter->next) {
            there += waiter->Leaves() ? 0 : 1;
        }
        return there >= count;
    });
}

void Clock::Set(KernelEvent& event) {
    const Guard guard(mutex);
    event.set = true;
    for (Waiter* waiter = waiters; waiter != nullptr; waiter = waiter->next) {
        if (waiter->event == &event) {
            waiter->changed.notify_one();
        }
    }
}

void Clock::Remove(Waiter& waiter) {
    Waiter** link = &waiters;
    while (*link != &waiter) {
        link = &(*link)->next;
    }
    *link = waiter.next;
}

void Clock::WakeAll() {
    for (Waiter* waiter = waiters; waiter != nullptr; waiter = waiter->next) {
        waiter->changed.notify_one();
    }
    timersChanged.notify_one();
    moved.notify_all();
}

bool Clock::SomeoneLeaves() const {
    for (const Waiter* waiter = waiters; waiter != nullptr; waiter = waiter->next) {
        if (waiter->Leaves()) {
            return true;
        }
    }
    return false;
}

// ------------------------------------------------------------------------------- simulated time

bool Clock::IsIdle(Guard& guard) const {
    // Events under way do not stop time: their handlers may wait for a lock that is free again only
    // when the wait which keeps it has ended.
    return delivery.UnfinishedAnswers(guard) == 0 && !SomeoneLeaves();
}

bool Clock::ExpireDue(Guard& guard) {
    bool any = false;
    for (Waiter* waiter = waiters; waiter != nullptr; waiter = waiter->next) {
        if (!waiter->Leaves() && waiter->deadline <= Time(guard)) {
            waiter->expired = true;
            waiter->changed.notify_one();
            any = true;
        }
    }
    return any;
}

Duration Clock::NextMoment(Duration last) const {
    if (!timers.empty()) {
        last = std::min(last, timers.begin()->first);
    }
    for (const Waiter* waiter = waiters; waiter != nullptr; waiter = waiter->next) {
        last = std::min(last, waiter->deadline);
    }
    return last;
}

void Clock::Advance(Guard& guard) {
    // At one moment, what is due goes before the waits that end then.
    while (simulated && !held && waiters != nullptr && IsIdle(guard)) {
        if (!ExpireDue(guard)) {
            MoveTo(guard, NextMoment(waiters->deadline));
            FireDue(guard);
        }
    }
}

void Clock::Hold(Guard& guard, bool hold) {
    held = hold;
    Advance(guard);
}

template <typename Condition>
bool Clock::AwaitProgress(Guard& guard, int patience, Condition condition) {
    unsigned long seen = delivery.Finished(guard);
    int looks = 0;
    steady_clock::time_point nextLook = steady_clock::now() + BetweenLooks;
    while (!condition()) {
        moved.wait_until(guard, nextLook);
        if (const steady_clock::time_point now = steady_clock::now(); now >= nextLook) {
            ++looks;
            nextLook = now + BetweenLooks;
        }
        if (seen != delivery.Finished(guard)) {
            seen = delivery.Finished(guard);
            looks = 0;
        } else if (looks >= patience) {
            return condition();
        }
    }
    return true;
}

bool Clock::Pass(Guard& guard, Duration duration) {
    if (delivery.IsOwnThread(guard)) {
        return false;
    }
    const Duration target = Time(guard) + duration;
    if (!simulated) {
        const steady_clock::time_point end = steady_clock::now() + duration;
        guard.unlock();
        std::this_thread::sleep_until(end);
        guard.lock();
        return true;
    }
    while (simulated) {
        if (!AwaitProgress(guard, Patience, [&] { return IsIdle(guard); })) {
            return false;
        }
        if (ExpireDue(guard)) {
            continue;
        }
        if (passed >= target) {
            break;
        }
        MoveTo(guard, NextMoment(target));
        FireDue(guard);
    }
    if (waiters != nullptr) {
        AwaitProgress(guard, PatienceDuringWaits, [&] { return delivery.Unfinished(guard) == 0; });
        return true;
    }
    return Settle(guard);
}

bool Clock::Settle(Guard& guard) {
    return !delivery.IsOwnThread(guard) && AwaitProgress(guard, Patience, [&] {
        return delivery.Unfinished(guard) == 0 &&
               (simulated || timers.empty() || timers.begin()->first > Time(guard));
    });
}

// ------------------------------------------------------------------------------------ real time

void Clock::StartTimerThread() {
    if (!simulated && !timerThreadRuns) {
        KeepModuleLoaded();
        std::thread([this] { RunTimerThread(); }).detach();
        timerThreadRuns = true;
    }
}

void Clock::RunTimerThread() {
    Guard guard(mutex);
    for (;;) {
        if (simulated || timers.empty()) {
            timersChanged.wait(guard);
        } else if (const Duration left = timers.begin()->first - Time(guard);
                   left > Duration::zero()) {
            timersChanged.wait_for(guard, left);
        } else {
            FireDue(guard);
            moved.notify_all();
        }
    }
}

}  // namespace orv::simulated
