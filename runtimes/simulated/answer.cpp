// How an operation is answered.
#include "runtimes/simulated/answer.h"

#include "quelvixwinlib_simulated.h"
#include "runtimes/simulated/world.h"

namespace orv::simulated {

namespace {

constexpr HRESULT E_ABORT = Hresult(0x80004004);

void PostInvocation(std::function<void()> invocation) {
    World& world = World::Get();
    auto task = std::make_unique<Task>(Lane::Answers, std::move(invocation), nullptr);
    Guard guard(world.mutex);
    world.clock.Post(guard, std::move(task));
}

class DeferringInvoker final : public objects::Invoker {
  public:
    void Invoke(std::function<void()> invocation) override {
        PostInvocation(std::move(invocation));
    }
};

// Returns when the handler has: as if the operation had ended during its registration.
class WaitingInvoker final : public objects::Invoker {
  public:
    void Invoke(std::function<void()> invocation) override {
        struct Return {
            std::mutex mutex;
            std::condition_variable changed;
            bool reached = false;
        };
        const auto handlerReturn = std::make_shared<Return>();
        PostInvocation([handlerReturn, call = std::move(invocation)] {
            call();
            const std::lock_guard<std::mutex> lock(handlerReturn->mutex);
            handlerReturn->reached = true;
            handlerReturn->changed.notify_all();
        });
        std::unique_lock<std::mutex> lock(handlerReturn->mutex);
        handlerReturn->changed.wait(lock, [&] { return handlerReturn->reached; });
    }
};

DeferringInvoker deferringInvoker;
WaitingInvoker waitingInvoker;

}  // namespace

Answer Answer::Silence() {
    Answer answer;
    answer.timing = Timing::Never;
    return answer;
}

bool Answer::Set(INT32 manner, INT32 value) {
    switch (manner) {
        case OrvManner_Standard:
            *this = Answer();
            return true;
        case OrvManner_AtOnce:
            timing = Timing::AtOnce;
            return true;
        case OrvManner_After:
            if (value < 0) {
                return false;
            }
            timing = Timing::After;
            delay = std::chrono::milliseconds(value);
            return true;
        case OrvManner_Never:
            timing = Timing::Never;
            return true;
        case OrvManner_EndsAs:
            if (value < static_cast<INT32>(AsyncStatus::Completed) ||
                value > static_cast<INT32>(AsyncStatus::Error)) {
                return false;
            }
            ending = static_cast<AsyncStatus>(value);
            return true;
        case OrvManner_StartFails:
            startCode = value;
            return true;
        case OrvManner_RegistrationFails:
            registrationCode = value;
            return true;
        case OrvManner_ResultFails:
            resultCode = value;
            return true;
        case OrvManner_NullResult:
            nullResult = value != 0;
            return true;
        case OrvManner_Status:
            status = value;
            return true;
        case OrvManner_EmptyList:
            emptyList = value != 0;
            return true;
        default:
            return false;
    }
}

objects::Ending Answer::Ending() const {
    switch (ending) {
        case AsyncStatus::Canceled:
            return {ending, E_ABORT};
        case AsyncStatus::Error:
            return {ending, E_FAIL};
        default:
            return {ending, S_OK};
    }
}

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
        Guard guard(world.mutex);
        world.clock.After(guard,
                          answer.timing == Answer::Timing::After ? answer.delay : standardDelay,
                          std::move(task));
    }
}

}  // namespace orv::simulated
