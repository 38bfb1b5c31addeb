#pragma once

#include <atomic>
#include <optional>

#include "platform/call.h"
#include "platform/handler.h"
#include "platform/runtime.h"

namespace orv {

// The status of an operation, shared by the waiting thread and the completion handler. It outlives
// a wait that timed out, because the operation may complete later.
class CompletionRecord {
  public:
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
    // Atomic, because the handler may write the status while a thread whose wait timed out reads
    // it.
    std::atomic<AsyncStatus> status{AsyncStatus::Started};
};

// Stores the final status of an operation, without a lock.
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

// Waits until the operation has ended, at most `limitMs`. Returns its status, which is `Started`
// after a timeout. A timeout does not cancel the operation, which may still take effect. Throws
// only if the wait cannot start.
template <typename T>
AsyncStatus WaitForCompletion(const Reference<IAsyncOperation<T>>& operation, UINT32 limitMs) {
    auto* handler = new CompletionHandler<T>;
    const auto owner = Reference<AsyncOperationCompletedHandler<T>>::Adopt(handler);
    Call(operation, &IAsyncOperation<T>::put_Completed, owner.Get());
    return handler->record.Wait(limitMs);
}

// Waits and returns the operation's result, which can be null. Returns std::nullopt if the
// operation failed or did not complete within `limitMs`.
template <typename T>
std::optional<Owned<Abi<T>>> AwaitResult(const Reference<IAsyncOperation<T>>& operation,
                                         UINT32 limitMs) {
    if (WaitForCompletion(operation, limitMs) != AsyncStatus::Completed) {
        return std::nullopt;
    }
    return Get(operation, &IAsyncOperation<T>::GetResults);
}

}  // namespace orv
