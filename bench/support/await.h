#pragma once

#include <atomic>

#include "bench/runtime/object.h"
#include "platform/runtime.h"
#include "runtimes/objects/counted.h"

namespace orv::bench {

template <typename T>
class HandlerByHand final : public objects::Counted<AsyncOperationCompletedHandler<T>> {
  public:
    HandlerByHand() { runtime::CreateKernelEvent(&event); }
    ~HandlerByHand() override { runtime::CloseKernelEvent(event); }

    HRESULT QueryInterface(const GUID*, void** object) override {
        this->AddRef();
        *object = this;
        return S_OK;
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
    std::atomic<AsyncStatus> status{AsyncStatus::Started};
    runtime::EventHandle event = nullptr;
};

// Waits for the operation, stores the result in `*result` and releases the operation. Returns false
// if the operation failed.
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
