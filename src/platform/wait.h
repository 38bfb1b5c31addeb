// The bounded wait: turns an asynchronous operation into a step with a time limit.
#pragma once

#include <atomic>
#include <optional>

#include "platform/call.h"
#include "platform/handler.h"
#include "platform/runtime.h"

namespace orv {

// What a wait and the completion that it waits for share. It outlives a wait that has given up, so
// that a late completion finds it.
class CompletionRecord {
  public:
    // Raises when the event cannot be created.
    CompletionRecord() { CheckResult(runtime::CreateKernelEvent(&event)); }
    ~CompletionRecord() { runtime::CloseKernelEvent(event); }
    CompletionRecord(const CompletionRecord&) = delete;
    CompletionRecord& operator=(const CompletionRecord&) = delete;

    void Complete(AsyncStatus final) {
        status.store(final, std::memory_order_release);
        runtime::SetKernelEvent(event);
    }

    AsyncStatus Wait(UINT32 limitMs) {
        runtime::WaitForKernelEvent(event, limitMs);
        return status.load(std::memory_order_acquire);
    }

  private:
    runtime::EventHandle event = nullptr;
    // Atomic: a completion may store just when the waiter, its limit passed, reads.
    std::atomic<AsyncStatus> status{AsyncStatus::Started};
};

// Runs on a thread of the runtime, possibly before put_Completed has returned, and takes no lock.
template <typename T>
class CompletionHandler final
    : public Handler<AsyncOperationCompletedHandler<T>, CompletionHandler<T>> {
  public:
    HRESULT Invoke(IAsyncOperation<T>*, AsyncStatus status) final {
        record.Complete(status);
        return S_OK;
    }
    CompletionRecord record;
};

// Blocks until the operation has ended or `limitMs` have passed, and returns its status at that
// moment: `Started` when the limit passed first. The operation is not cancelled then and may still
// take effect. Raises only when the wait cannot be set up.
template <typename T>
AsyncStatus WaitForCompletion(const Reference<IAsyncOperation<T>>& operation, UINT32 limitMs) {
    auto* handler = new CompletionHandler<T>;
    const auto owner = Reference<AsyncOperationCompletedHandler<T>>::Adopt(handler);
    Call(operation, &IAsyncOperation<T>::put_Completed, owner.Get());
    return handler->record.Wait(limitMs);
}

// The operation's result, once it has completed within the limit; nothing on any other ending. A
// result can itself be null.
template <typename T>
std::optional<Owned<Abi<T>>> AwaitResult(const Reference<IAsyncOperation<T>>& operation,
                                         UINT32 limitMs) {
    if (WaitForCompletion(operation, limitMs) != AsyncStatus::Completed) {
        return std::nullopt;
    }
    return Get(operation, &IAsyncOperation<T>::GetResults);
}

}  // namespace orv
