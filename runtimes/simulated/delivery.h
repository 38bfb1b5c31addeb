// The world's own threads, on which answers and events reach the library.
#pragma once

#include <array>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace orv::simulated {

using Guard = std::unique_lock<std::mutex>;

// Threads are apart by what may block them: an advertisement handler can wait for a lock that a
// host thread keeps while it waits for an answer, and a handler of notifications for another. So
// each kind has threads of its own, and answers always get through.
enum class Lane { Answers, Advertisements, Notifications };
constexpr std::size_t LaneCount = 3;

struct Task;

class TaskQueue {
  public:
    void Push(std::unique_ptr<Task> task) noexcept;
    std::unique_ptr<Task> Pop() noexcept;  // null when empty

  private:
    std::unique_ptr<Task> first;
    Task* last = nullptr;
};

// Keeps the order of its tasks: one at a time, first in, first out.
struct Strand {
    TaskQueue waiting;  // guarded by the delivery's mutex
    bool busy = false;  // guarded by the delivery's mutex
};

struct Task {
    Task(Lane laneOfTask, std::function<void()> workOfTask, std::shared_ptr<Strand> strandOfTask)
        : lane(laneOfTask), work(std::move(workOfTask)), strand(std::move(strandOfTask)) {}

    Lane lane;
    std::function<void()> work;
    std::shared_ptr<Strand> strand;  // null: beside everything else
    std::unique_ptr<Task> next;
};

class Delivery {
  public:
    // `finished` is called with the mutex held each time that a task is done.
    Delivery(std::mutex& mutexOfWorld, std::function<void(Guard&)> finished);

    // Makes sure that the lane has threads. Throws when it cannot have any.
    void Prepare(Guard& guard, Lane lane);
    // The lane is prepared. Runs the task as soon as its strand and a thread are free.
    void Post(Guard& guard, std::unique_ptr<Task> task) noexcept;

    // Posted and not done.
    int Unfinished(Guard&) const { return unfinished; }
    int UnfinishedAnswers(Guard&) const { return unfinishedAnswers; }
    // Grows with every task done.
    unsigned long Finished(Guard&) const { return finishedTasks; }
    // The calling thread is one of these threads, so it must not wait for them.
    bool IsOwnThread(Guard& guard) const;

  private:
    struct LaneState {
        TaskQueue ready;
        std::condition_variable filled;
        bool prepared = false;
    };

    [[noreturn]] void Run(Lane lane);
    void Finish(Guard& guard, std::unique_ptr<Task> task);
    void MakeReady(std::unique_ptr<Task> task) noexcept;

    static constexpr std::size_t MaximumThreads = 10;

    std::mutex& mutex;
    const std::function<void(Guard&)> onFinished;
    // All guarded by the mutex.
    std::array<LaneState, LaneCount> lanes;
    std::array<std::thread::id, MaximumThreads> threads;
    std::size_t threadCount = 0;
    int unfinished = 0;
    int unfinishedAnswers = 0;
    unsigned long finishedTasks = 0;
};

}  // namespace orv::simulated
