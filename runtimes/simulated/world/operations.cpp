#include "runtimes/simulated/world/operations.h"

namespace orv::simulated {

namespace {

void PostInvocation(std::function<void()> invocation) {
    World& world = World::Get();
    auto task = std::make_unique<Task>(Lane::Answers, std::move(invocation), nullptr);
    const Lock lock(worldMutex);
    world.clock.Post(std::move(task));
}

// Invokes the handler on another thread and waits until it has returned. To the library, the
// operation seems to end during the registration of the handler.
void InvokeAndWait(std::function<void()> invocation) {
    struct Return {
        Mutex mutex;
        Condition changed;
        bool reached GUARDED_BY(mutex) = false;
    };
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

}  // namespace

objects::Invoker InvokerOf(const Answer& answer) {
    return answer.timing == Answer::Timing::AtOnce ? &InvokeAndWait : &PostInvocation;
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
