// The event loop of the runtime. Its thread runs the tasks that other threads post, runs timers,
// and polls the D-Bus connection.
#pragma once

#include <poll.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <thread>
#include <vector>

#include "runtimes/objects/mutex.h"

namespace orv::bluez {

using objects::Lock;
using objects::Mutex;
using Task = std::function<void()>;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// The event loop's thread calls these functions.
class Pollable {
  public:
    // Sets the descriptor and the events to poll for. Returns the deadline of the poll.
    virtual Clock::time_point Prepare(pollfd& polled) = 0;
    virtual void Ready() = 0;  // called when the descriptor is ready or the deadline has passed

  protected:
    ~Pollable() = default;
};

// Runs the body. Returns false if it throws: memory is exhausted, and the body's event is lost.
template <typename Body>
bool Contained(Body&& body) noexcept {
    try {
        body();
        return true;
    } catch (...) {
        return false;
    }
}

class Loop {
  public:
    // `resumeAfterFailure` continues what a failure has interrupted. Throws if no descriptor is
    // available to wake the loop.
    explicit Loop(Task resumeAfterFailure);

    // Call this once, after everything that tasks use is constructed. The loop runs until the
    // process ends.
    void Start();

    bool IsOwnThread() const { return std::this_thread::get_id() == thread.load(); }

    // Runs the task on the loop's thread, after earlier tasks. Any thread may call this.
    void Post(Task task);

    // Only the loop's thread may call the functions below. A timer cannot be cancelled, so the task
    // must check whether it is still needed.
    void After(milliseconds delay, Task task);
    // Polls `source` instead of the former source. Null ends polling.
    void Watch(Pollable* source) { watched = source; }
    // Calls resumeAfterFailure after the delay. Needs no memory.
    void ResumeAfter(milliseconds delay) { resumesAt = std::min(resumesAt, Clock::now() + delay); }
    // Runs the body. If it throws, returns false, and the loop calls resumeAfterFailure later.
    template <typename Body>
    bool Attempt(Body&& body) noexcept {
        const bool completed = Contained(body);
        if (!completed) {
            ResumeAfter(PauseWithoutMemory);
        }
        return completed;
    }

  private:
    static constexpr milliseconds PauseWithoutMemory{20};

    [[noreturn]] void Run();
    void RunPosted();
    void RunDueTimers();
    void Poll();

    const Task resume;
    const int wake;
    std::atomic<std::thread::id> thread;
    Mutex mutex;
    std::vector<Task> posted GUARDED_BY(mutex);
    // Only the loop's thread uses these members.
    std::multimap<Clock::time_point, Task> timers;
    Pollable* watched = nullptr;
    Clock::time_point resumesAt = Clock::time_point::max();
};

// Returns `descriptor`. Throws if it is negative (none was free).
int Checked(int descriptor);

}  // namespace orv::bluez
