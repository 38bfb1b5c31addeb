// The world's own threads.
#include "runtimes/simulated/delivery.h"

#include "runtimes/simulated/module.h"

namespace orv::simulated {

namespace {

constexpr std::size_t ThreadsOfLane[LaneCount] = {2, 4, 4};

std::size_t IndexOf(Lane lane) {
    return static_cast<std::size_t>(lane);
}

}  // namespace

void TaskQueue::Push(std::unique_ptr<Task> task) noexcept {
    Task* const added = task.get();
    (first ? last->next : first) = std::move(task);
    last = added;
}

std::unique_ptr<Task> TaskQueue::Pop() noexcept {
    std::unique_ptr<Task> task = std::move(first);
    if (task) {
        first = std::move(task->next);
    }
    return task;
}

Delivery::Delivery(std::mutex& mutexOfWorld, std::function<void(Guard&)> finished)
    : mutex(mutexOfWorld), onFinished(std::move(finished)) {}

void Delivery::Prepare(Guard&, Lane lane) {
    LaneState& state = lanes[IndexOf(lane)];
    if (state.prepared) {
        return;
    }
    KeepModuleLoaded();
    for (std::size_t i = 0; i < ThreadsOfLane[IndexOf(lane)]; ++i) {
        std::thread thread([this, lane] { Run(lane); });
        threads[threadCount++] = thread.get_id();
        thread.detach();
        // One thread is enough to go on when the system refuses the next.
        state.prepared = true;
    }
}

void Delivery::Post(Guard&, std::unique_ptr<Task> task) noexcept {
    ++unfinished;
    unfinishedAnswers += task->lane == Lane::Answers ? 1 : 0;
    Strand* const strand = task->strand.get();
    if (strand != nullptr && strand->busy) {
        strand->waiting.Push(std::move(task));
        return;
    }
    if (strand != nullptr) {
        strand->busy = true;
    }
    MakeReady(std::move(task));
}

bool Delivery::IsOwnThread(Guard&) const {
    for (std::size_t i = 0; i < threadCount; ++i) {
        if (threads[i] == std::this_thread::get_id()) {
            return true;
        }
    }
    return false;
}

void Delivery::MakeReady(std::unique_ptr<Task> task) noexcept {
    LaneState& state = lanes[IndexOf(task->lane)];
    state.ready.Push(std::move(task));
    state.filled.notify_one();
}

void Delivery::Run(Lane lane) {
    LaneState& state = lanes[IndexOf(lane)];
    Guard guard(mutex);
    for (;;) {
        std::unique_ptr<Task> task = state.ready.Pop();
        if (!task) {
            state.filled.wait(guard);
            continue;
        }
        guard.unlock();
        try {
            task->work();
        } catch (...) {
            // Out of memory on the world's own account: this answer or event is lost.
        }
        // What the task held goes before it counts as done, and without the mutex: foreign
        // handlers may be among it.
        task->work = nullptr;
        guard.lock();
        Finish(guard, std::move(task));
    }
}

void Delivery::Finish(Guard& guard, std::unique_ptr<Task> task) {
    --unfinished;
    unfinishedAnswers -= task->lane == Lane::Answers ? 1 : 0;
    ++finishedTasks;
    if (Strand* const strand = task->strand.get()) {
        std::unique_ptr<Task> next = strand->waiting.Pop();
        strand->busy = next != nullptr;
        if (next) {
            MakeReady(std::move(next));
        }
    }
    onFinished(guard);
}

}  // namespace orv::simulated
