#include "runtimes/simulated/world/delivery_threads.h"

#include "runtimes/objects/thread.h"

namespace orv::simulated {

Mutex worldMutex;

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

DeliveryThreads::DeliveryThreads(std::function<void()> finished)
    : onFinished(std::move(finished)) {}

void DeliveryThreads::Prepare(Lane lane) {
    LaneState& state = lanes[IndexOf(lane)];
    if (state.prepared) {
        return;
    }
    for (std::size_t i = 0; i < ThreadsOfLane[IndexOf(lane)]; ++i) {
        threads[threadCount] = objects::StartThread([this, lane] { Run(lane); });
        ++threadCount;
        // One thread suffices for this kind of task if the system refuses more.
        state.prepared = true;
    }
}

void DeliveryThreads::Post(std::unique_ptr<Task> task) noexcept {
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

bool DeliveryThreads::IsOwnThread() const {
    for (std::size_t i = 0; i < threadCount; ++i) {
        if (threads[i].get_id() == std::this_thread::get_id()) {
            return true;
        }
    }
    return false;
}

void DeliveryThreads::MakeReady(std::unique_ptr<Task> task) noexcept {
    LaneState& state = lanes[IndexOf(task->lane)];
    state.ready.Push(std::move(task));
    state.filled.NotifyOne();
}

void DeliveryThreads::Run(Lane lane) {
    worldMutex.Acquire();
    LaneState& state = lanes[IndexOf(lane)];
    for (;;) {
        std::unique_ptr<Task> task = state.ready.Pop();
        if (!task) {
            state.filled.Wait(worldMutex);
            continue;
        }
        worldMutex.Release();
        try {
            task->work();
        } catch (...) {
            // The simulator is out of memory, so the answer or event is lost.
        }
        // Destroys the work before the task counts as finished, and while the mutex is not held,
        // because the work may own handlers of the library.
        task->work = nullptr;
        worldMutex.Acquire();
        Finish(std::move(task));
    }
}

void DeliveryThreads::Finish(std::unique_ptr<Task> task) {
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
    onFinished();
}

}  // namespace orv::simulated
