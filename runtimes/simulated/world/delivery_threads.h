// The threads of the simulated world, which deliver answers and events to the library.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <thread>

#include "runtimes/objects/mutex.h"

namespace orv::simulated {

using objects::Condition;
using objects::Lock;
using objects::Mutex;

// Guards the state of the world. While holding it, do not call handlers or release objects of the
// library, because they may call the world.
extern Mutex worldMutex;

// Each kind of task has its own threads. Otherwise, event handlers could occupy all threads while
// they wait for a lock that a host thread holds until an answer arrives.
enum class Lane { Answers, Advertisements, Notifications };
constexpr std::size_t LaneCount = 3;

struct Task;

class TaskQueue {
  public:
    void Push(std::unique_ptr<Task> task) noexcept;
    std::unique_ptr<Task> Pop() noexcept;  // returns null if the queue is empty

  private:
    std::unique_ptr<Task> first;
    Task* last = nullptr;
};

// A queue whose tasks run one at a time, in the order of posting.
struct Strand {
    TaskQueue waiting GUARDED_BY(worldMutex);
    bool busy GUARDED_BY(worldMutex) = false;
};

struct Task {
    Task(Lane laneOfTask, std::function<void()> workOfTask, std::shared_ptr<Strand> strandOfTask)
        : lane(laneOfTask), work(std::move(workOfTask)), strand(std::move(strandOfTask)) {}

    Lane lane;
    std::function<void()> work;
    std::shared_ptr<Strand> strand;  // null if the task may run in parallel with all others
    std::unique_ptr<Task> next;
};

class DeliveryThreads {
  public:
    // Calls `finished` after each task, with the world's mutex held.
    explicit DeliveryThreads(std::function<void()> finished);

    // Creates threads for the lane if it has none. Throws if the system refuses a thread.
    void Prepare(Lane lane) REQUIRES(worldMutex);
    // Runs the task when its strand and a thread of its lane are free. Call Prepare first.
    void Post(std::unique_ptr<Task> task) noexcept REQUIRES(worldMutex);

    int Unfinished() const REQUIRES(worldMutex) { return unfinished; }
    int UnfinishedAnswers() const REQUIRES(worldMutex) { return unfinishedAnswers; }
    unsigned long Finished() const REQUIRES(worldMutex) { return finishedTasks; }
    // Returns whether the caller is a delivery thread, which must not wait for tasks.
    bool IsOwnThread() const REQUIRES(worldMutex);

  private:
    struct LaneState {
        TaskQueue ready GUARDED_BY(worldMutex);
        Condition filled;
        bool prepared GUARDED_BY(worldMutex) = false;
    };

    [[noreturn]] void Run(Lane lane);
    void Finish(std::unique_ptr<Task> task) REQUIRES(worldMutex);
    void MakeReady(std::unique_ptr<Task> task) noexcept REQUIRES(worldMutex);

    static constexpr std::size_t MaximumThreads = 10;

    const std::function<void()> onFinished;
    std::array<LaneState, LaneCount> lanes GUARDED_BY(worldMutex);
    // The threads are not joined, because they run until the process ends. They are not detached,
    // because MinGW sometimes never runs a thread that is detached before it starts.
    std::array<std::thread, MaximumThreads> threads GUARDED_BY(worldMutex);
    std::size_t threadCount GUARDED_BY(worldMutex) = 0;
    int unfinished GUARDED_BY(worldMutex) = 0;
    int unfinishedAnswers GUARDED_BY(worldMutex) = 0;
    unsigned long finishedTasks GUARDED_BY(worldMutex) = 0;
};

}  // namespace orv::simulated
