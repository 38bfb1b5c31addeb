#pragma once

#include "runtimes/simulated/world/world.h"

namespace orv::simulated {

// Returns a function that invokes a handler which the library registers after the operation has
// ended.
objects::Invoker InvokerOf(const Answer& answer);
void EndAfter(const Answer& answer, Duration standardDelay, std::function<void()> end);

// Starts an operation with the configured answer. It ends after `standardDelay` if no delay is
// configured. The caller must hold no lock.
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
