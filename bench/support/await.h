// Waiting for an operation by hand: a handler, an event, a status.
#pragma once

#include "bench/runtime/object.h"
#include "platform/runtime.h"

namespace orv::bench {

template <typename T>
class HandlerByHand final : public AsyncOperationCompletedHandler<T> {
  public:
    HandlerByHand() { runtime::CreateKernelEvent(&event); }
    virtual ~HandlerByHand() { runtime::CloseKernelEvent(event); }

    HRESULT QueryInterface(const GUID*, void** object) override {
        AddRef();
        *object = this;
        return S_OK;
    }
    ULONG AddRef() override { return references.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG Release() override {
        const ULONG left = references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    HRESULT Invoke(IAsyncOperation<T>*, AsyncStatus ended) override {
        status.store(ended, std::memory_order_release);
        runtime::SetKernelEvent(event);
        return S_OK;
    }

    AsyncStatus Wait() {
        runtime::WaitForKernelEvent(event, 2000);
        return status.load(std::memory_order_acquire);
    }

  private:
    std::atomic<ULONG> references{1};
    std::atomic<AsyncStatus> status{AsyncStatus::Started};
    runtime::EventHandle event = nullptr;
};

// Takes over the operation.
template <typename T>
bool AwaitByHand(IAsyncOperation<T>* operation, Abi<T>* result) {
    auto* const handler = new HandlerByHand<T>;
    operation->put_Completed(handler);
    const bool completed = handler->Wait() == AsyncStatus::Completed;
    handler->Release();
    if (completed && result) {
        operation->GetResults(result);
    }
    operation->Release();
    return completed;
}

template <typename Interface>
Interface* QueryByHand(IUnknown* object) {
    void* found = nullptr;
    object->QueryInterface(&IidOf<Interface>, &found);
    return static_cast<Interface*>(found);
}

template <typename Class, typename Interface>
Interface* FactoryByHand() {
    static Interface* const factory = [] {
        void* found = nullptr;
        runtime::GetActivationFactory(Class::Name, Interface::Iid, &found);
        return static_cast<Interface*>(found);
    }();
    return factory;
}

}  // namespace orv::bench
