// How an operation is answered, as it is arranged for one device or for the machine.
#pragma once

#include <optional>

#include "runtimes/objects/operation.h"
#include "runtimes/simulated/clock.h"

namespace orv::simulated {

struct Answer {
    enum class Timing { Standard, AtOnce, After, Never };

    Timing timing = Timing::Standard;
    Duration delay{0};
    AsyncStatus ending = AsyncStatus::Completed;
    HRESULT startCode = S_OK;
    HRESULT registrationCode = S_OK;
    HRESULT resultCode = S_OK;
    bool nullResult = false;
    std::optional<INT32> status;
    bool emptyList = false;

    // An answer that never comes.
    static Answer Silence();
    // Sets one side of the answer. False: there is no such manner or value.
    bool Set(INT32 manner, INT32 value);
    objects::Ending Ending() const;
};

// Invokes late handlers on a thread of the world.
objects::Invoker& InvokerOf(const Answer& answer);
void EndAfter(const Answer& answer, Duration standardDelay, std::function<void()> end);

// Starts an operation that is answered like this. `standardDelay`: how long it takes when nothing
// is arranged. No lock may be held.
template <typename T>
HRESULT StartOperation(const Answer& answer, typename objects::Operation<T>::Result result,
                       IAsyncOperation<T>** operation, Duration standardDelay = Duration::zero()) {
    if (answer.startCode != S_OK || operation == nullptr) {
        return operation == nullptr ? E_POINTER : answer.startCode;
    }
    auto arranged = [answer, result = std::move(result)](Abi<T>* results) {
        if (answer.resultCode != S_OK) {
            return answer.resultCode;
        }
        if (answer.nullResult) {
            *results = {};
            return S_OK;
        }
        return result(results);
    };
    const auto started = objects::Make<objects::Operation<T>>(
        InvokerOf(answer), answer.registrationCode, std::move(arranged));
    EndAfter(answer, standardDelay, [started, ending = answer.Ending()] { started->End(ending); });
    return Give(operation, started);
}

}  // namespace orv::simulated
