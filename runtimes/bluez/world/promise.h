#pragma once

#include <memory>

#include "runtimes/bluez/daemon/daemon.h"
#include "runtimes/bluez/world/objects.h"
#include "runtimes/objects/operation.h"

namespace orv::bluez {

template <typename Interface, typename T>
HRESULT GiveResult(Interface** receiver, const objects::Ref<T>& result) {
    return Give(receiver, result);
}
template <typename T>
HRESULT GiveResult(T* receiver, const T& result) {
    *receiver = result;
    return S_OK;
}

// Ends its operation once. If the promise is destroyed without a result (out of memory, or a failed
// call to the daemon), the operation fails.
template <typename T, typename Value>
class Promise {
  public:
    Promise()
        : value(std::make_shared<Value>()),
          operation(objects::Make<objects::Operation<T>>(
              [](Task invocation) { Daemon::Get().loop.Post(std::move(invocation)); }, S_OK,
              [kept = value](Abi<T>* receiver) { return GiveResult(receiver, *kept); })) {}
    Promise(const Promise&) = delete;
    Promise& operator=(const Promise&) = delete;
    ~Promise() { End(AsyncStatus::Error); }

    void Complete(Value result) {
        *value = std::move(result);
        End(AsyncStatus::Completed);
    }

    const objects::Ref<objects::Operation<T>>& Operation() const { return operation; }

  private:
    void End(AsyncStatus status) {
        if (!std::exchange(ended, true)) {
            operation->End({status, E_FAIL});
        }
    }

    const std::shared_ptr<Value> value;
    const objects::Ref<objects::Operation<T>> operation;
    bool ended = false;
};

// Starts an operation. `work` receives the promise on the event loop's thread.
template <typename T, typename Value = Abi<T>, typename Work>
HRESULT StartOperation(IAsyncOperation<T>** operation, Work work) {
    if (operation == nullptr) {
        return E_POINTER;
    }
    auto promise = std::make_shared<Promise<T, Value>>();
    Daemon::Get().loop.Post([promise, work = std::move(work)] { work(promise); });
    return Give(operation, promise->Operation());
}

}  // namespace orv::bluez
