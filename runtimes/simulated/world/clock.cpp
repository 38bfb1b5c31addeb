#include "runtimes/simulated/world/clock.h"

#include <algorithm>

#include "runtimes/objects/thread.h"

namespace orv::simulated {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Pass and Settle fail after `Patience` checks without progress, `BetweenLooks` apart. Checks are
// counted instead of elapsed time, because a busy machine can delay each check.
constexpr milliseconds BetweenLooks{100};
constexpr int Patience = 300;
// LookAtEvents uses the next two values. They are smaller, because its thread may hold a lock that
// blocks event handlers.
constexpr int PatienceDuringWaits = 10;
constexpr milliseconds BetweenLooksDuringWaits{5};

}  // namespace

Clock::Clock()
    : delivery([this]() REQUIRES(worldMutex) {
          moved.NotifyAll();
          Advance();
      }),
      realStart(steady_clock::now()) {}

Duration Clock::Time() const {
    return simulated ? passed : passed + (steady_clock::now() - realStart);
}

void Clock::MoveTo(Duration moment) {
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

Clock::Timers Clock::Begin(bool simulatedTime) {
    passed = Time();
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

void Clock::Post(std::unique_ptr<Task> task) {
    delivery.Prepare(task->lane);
    delivery.Post(std::move(task));
}

void Clock::After(Duration delay, std::unique_ptr<Task> task) {
    if (delay <= Duration::zero()) {
        Post(std::move(task));
        return;
    }
    delivery.Prepare(task->lane);
    StartTimerThread();
    timers.emplace(Time() + delay, Timer{std::move(task), nullptr});
    timersChanged.NotifyOne();
}

void Clock::After(Duration delay, Action action) {
    StartTimerThread();
    timers.emplace(Time() + delay, Timer{nullptr, std::move(action)});
    timersChanged.NotifyOne();
}

void Clock::Fire(Timer timer) {
    if (timer.task) {
        delivery.Post(std::move(timer.task));
        return;
    }
    try {
        timer.action();
    } catch (...) {
        // The simulator is out of memory, so the event is lost.
    }
}

void Clock::FireDue(Duration moment) {
    while (!timers.empty() && timers.begin()->first <= moment) {
        Timer timer = std::move(timers.begin()->second);
        timers.erase(timers.begin());
        Fire(std::move(timer));
    }
}

void Clock::Wait(KernelEvent& event, milliseconds limit) {
    const Lock lock(worldMutex);
    const steady_clock::time_point realDeadline = steady_clock::now() + limit;
    Waiter waiter;
    waiter.event = &event;
    waiter.deadline = Time() + limit;
    waiter.next = waiters;
    waiters = &waiter;
    moved.NotifyAll();
    int looks = 0;
    for (;;) {
        // Repeats all checks, because a reset may have switched between simulated and real time.
        Advance();
        if (waiter.CanResume()) {
            break;
        }
        if (simulated) {
            LookAtEvents(waiter, looks);
        } else if (!waiter.changed.WaitUntil(worldMutex, realDeadline)) {
            AwaitDueAnswers(waiter);
            waiter.expired = !simulated;
        }
    }
    Remove(waiter);
    moved.NotifyAll();
    Advance();
}

void Clock::LookAtEvents(Waiter& waiter, int& looks) {
    const unsigned long seen = delivery.Finished();
    const bool woken =
        waiter.changed.WaitUntil(worldMutex, steady_clock::now() + BetweenLooksDuringWaits);
    looks = woken || seen != delivery.Finished() || delivery.Unfinished() == 0 ? 0 : looks + 1;
    if (looks >= PatienceDuringWaits) {
        finishedWhenBlocked = delivery.Finished();
    }
}

bool Clock::AwaitWaits(int count) {
    const steady_clock::time_point end = steady_clock::now() + Patience * BetweenLooks;
    for (;;) {
        int waiting = 0;
        for (const Waiter* waiter = waiters; waiter != nullptr; waiter = waiter->next) {
            waiting += waiter->CanResume() ? 0 : 1;
        }
        if (waiting >= count) {
            return true;
        }
        if (steady_clock::now() >= end) {
            return false;
        }
        moved.WaitUntil(worldMutex, end);
    }
}

void Clock::Set(KernelEvent& event) {
    const Lock lock(worldMutex);
    event.set = true;
    for (Waiter* waiter = waiters; waiter != nullptr; waiter = waiter->next) {
        if (waiter->event == &event) {
            waiter->changed.NotifyOne();
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
        waiter->changed.NotifyOne();
    }
    timersChanged.NotifyOne();
    moved.NotifyAll();
}

bool Clock::SomeoneCanResume() const {
    for (const Waiter* waiter = waiters; waiter != nullptr; waiter = waiter->next) {
        if (waiter->CanResume()) {
            return true;
        }
    }
    return false;
}

bool Clock::IsIdle() const {
    return delivery.UnfinishedAnswers() == 0 && !SomeoneCanResume();
}

bool Clock::MayJump() const {
    // Blocked events do not stop time, because their handlers may need a lock that a host thread
    // holds until its wait ends.
    const bool areEventsDone =
        delivery.Unfinished() == 0 || delivery.Finished() == finishedWhenBlocked;
    return simulated && !held && waiters != nullptr && IsIdle() && areEventsDone;
}

bool Clock::ExpireDue() {
    bool any = false;
    for (Waiter* waiter = waiters; waiter != nullptr; waiter = waiter->next) {
        if (!waiter->CanResume() && waiter->deadline <= Time()) {
            waiter->expired = true;
            waiter->changed.NotifyOne();
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

void Clock::Advance() {
    // If an event and a timeout are due at the same time, the event runs first.
    while (MayJump()) {
        if (!ExpireDue()) {
            MoveTo(NextMoment(waiters->deadline));
            FireDue(Time());
        }
    }
}

void Clock::Hold(bool hold) {
    held = hold;
    Advance();
}

template <typename Claim>
bool Clock::AwaitProgress(int patience, Claim claim) {
    unsigned long seen = delivery.Finished();
    int looks = 0;
    steady_clock::time_point nextLook = steady_clock::now() + BetweenLooks;
    while (!claim()) {
        moved.WaitUntil(worldMutex, nextLook);
        if (const steady_clock::time_point now = steady_clock::now(); now >= nextLook) {
            ++looks;
            nextLook = now + BetweenLooks;
        }
        if (seen != delivery.Finished()) {
            seen = delivery.Finished();
            looks = 0;
        } else if (looks >= patience) {
            return claim();
        }
    }
    return true;
}

void Clock::AwaitDueAnswers(const Waiter& waiter) {
    FireDue(waiter.deadline);
    AwaitProgress(Patience, [&]() REQUIRES(worldMutex) {
        return waiter.CanResume() || delivery.UnfinishedAnswers() == 0;
    });
}

bool Clock::Pass(Duration duration) {
    if (delivery.IsOwnThread()) {
        return false;
    }
    const Duration target = Time() + duration;
    if (!simulated) {
        const steady_clock::time_point end = steady_clock::now() + duration;
        worldMutex.Release();
        std::this_thread::sleep_until(end);
        worldMutex.Acquire();
        return true;
    }
    while (simulated) {
        if (!AwaitProgress(Patience, [&]() REQUIRES(worldMutex) { return IsIdle(); })) {
            return false;
        }
        if (ExpireDue()) {
            continue;
        }
        if (passed >= target) {
            break;
        }
        MoveTo(NextMoment(target));
        FireDue(Time());
    }
    if (waiters != nullptr) {
        AwaitProgress(PatienceDuringWaits,
                      [&]() REQUIRES(worldMutex) { return delivery.Unfinished() == 0; });
        return true;
    }
    return Settle();
}

bool Clock::Settle() {
    return !delivery.IsOwnThread() && AwaitProgress(Patience, [&]() REQUIRES(worldMutex) {
        return delivery.Unfinished() == 0 &&
               (simulated || timers.empty() || timers.begin()->first > Time());
    });
}

void Clock::StartTimerThread() {
    if (!simulated && !timerThread.joinable()) {
        timerThread = objects::StartThread([this] { RunTimerThread(); });
    }
}

void Clock::RunTimerThread() {
    worldMutex.Acquire();
    for (;;) {
        if (simulated || timers.empty()) {
            timersChanged.Wait(worldMutex);
        } else if (const Duration left = timers.begin()->first - Time(); left > Duration::zero()) {
            timersChanged.WaitFor(worldMutex, left);
        } else {
            FireDue(Time());
            moved.NotifyAll();
        }
    }
}

}  // namespace orv::simulated
