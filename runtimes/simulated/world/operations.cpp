// Starts operations with configured answers.
#include "runtimes/simulated/world/operations.h"

namespace orv::simulated {

namespace {

void PostInvocation(std::function<void()> invocation) {
    World& world = World::Get();
    auto task = std::make_unique<Task>(Lane::Answers, std::move(invocation), nullptr);
    const Lock lock(worldMutex);
    world.clock.Post(std::move(task));
}

class DeferringInvoker final : public objects::Invoker {
  public:
    void Invoke(std::function<void()> invocation) override {
        PostInvocation(std::move(invocation));
    }
};

// Invoke waits until the handler has returned, as if the operation ended during the registration.
class WaitingInvoker final : public objects::Invoker {
  public:
    void Invoke(std::function<void()> invocation) override {
        const auto handler = std::make_shared<Return>();
        PostInvocation([handler, call = std::move(invocation)] {
            call();
            const Lock lock(handler->mutex);
            handler->reached = true;
            handler->changed.NotifyAll();
        });
        const Lock lock(handler->mutex);
        while (!handler->reached) {
            handler->changed.Wait(handler->mutex);
        }
    }

  private:
    struct Return {
        Mutex mutex;
        Condition changed;
        bool reached GUARDED_BY(mutex) = false;
    };
};

DeferringInvoker deferringInvoker;
WaitingInvoker waitingInvoker;

}  // namespace

objects::Invoker& InvokerOf(const Answer& answer) {
    if (answer.timing == Answer::Timing::AtOnce) {
        return waitingInvoker;
    }
    return deferringInvoker;
}

void EndAfter(const Answer& answer, Duration standardDelay, std::function<void()> end) {
    if (answer.timing == Answer::Timing::AtOnce) {
        end();
    } else if (answer.timing != Answer::Timing::Never) {
        World& world = World::Get();
        auto task = std::make_unique<Task>(Lane::Answers, std::move(end), nullptr);
        const Lock lock(worldMutex);
        world.clock.After(answer.timing == Answer::Timing::After ? answer.delay : standardDelay,
                          std::move(task));
    }
}

}  // namespace orv::simulated
