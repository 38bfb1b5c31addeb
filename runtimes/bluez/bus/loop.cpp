#include "runtimes/bluez/bus/loop.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

#include "runtimes/objects/thread.h"

namespace orv::bluez {

int Checked(int descriptor) {
    if (descriptor < 0) {
        throw std::bad_alloc();  // no file descriptor is free
    }
    return descriptor;
}

Loop::Loop(Task resumeAfterFailure)
    : resume(std::move(resumeAfterFailure)),
      wake(Checked(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))) {}

void Loop::Start() {
    objects::StartThread([this] { Run(); }).detach();
}

void Loop::Post(Task task) {
    bool first = false;
    {
        const Lock lock(mutex);
        first = posted.empty();
        posted.push_back(std::move(task));
    }
    if (first) {
        const std::uint64_t one = 1;
        static_cast<void>(!write(wake, &one, sizeof one));  // fails only if `wake` is set already
    }
}

void Loop::After(milliseconds delay, Task task) {
    timers.emplace(Clock::now() + delay, std::move(task));
}

void Loop::Run() {
    thread = std::this_thread::get_id();
    for (;;) {
        Attempt([this] {
            RunPosted();
            RunDueTimers();
            Poll();
        });
    }
}

void Loop::RunPosted() {
    std::vector<Task> tasks;
    {
        const Lock lock(mutex);
        tasks.swap(posted);
    }
    for (Task& task : tasks) {
        Attempt(task);
        // Destroys the task, and what it refers to, before the next task runs.
        task = nullptr;
    }
}

void Loop::RunDueTimers() {
    while (!timers.empty() && timers.begin()->first <= Clock::now()) {
        const Task task = std::move(timers.begin()->second);
        timers.erase(timers.begin());
        Attempt(task);
    }
    if (resumesAt <= Clock::now()) {
        resumesAt = Clock::time_point::max();
        Attempt(resume);
    }
}

void Loop::Poll() {
    pollfd descriptors[] = {{wake, POLLIN, 0}, {-1, 0, 0}};  // poll ignores the descriptor -1
    const auto due =
        watched == nullptr ? Clock::time_point::max() : watched->Prepare(descriptors[1]);
    const auto timer = timers.empty() ? resumesAt : std::min(resumesAt, timers.begin()->first);
    const auto deadline = std::min(due, timer);
    int timeout = -1;
    if (deadline != Clock::time_point::max()) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
        timeout = static_cast<int>(std::clamp<milliseconds::rep>(left, 0, 60000));
    }
    poll(descriptors, std::size(descriptors), timeout);
    if (descriptors[0].revents != 0) {
        std::uint64_t count = 0;
        static_cast<void>(!read(wake, &count, sizeof count));
    }
    if (descriptors[1].revents != 0 || due <= Clock::now()) {
        watched->Ready();
    }
}

}  // namespace orv::bluez
