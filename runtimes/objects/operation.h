// An asynchronous operation: started, ended once, its handler invoked once, its result taken.
#pragma once

#include <functional>
#include <mutex>

#include "platform/abi/foundation.h"
#include "runtimes/objects/handler.h"
#include "runtimes/objects/object.h"
#include "runtimes/objects/stubs/foundation.h"

namespace orv::objects {

extern Class asyncOperationClass;
extern Member putCompletedMember;
extern Member getResultsMember;

// Runs the invocation of a handler that was registered on an operation that had ended already. It
// belongs on a thread of the runtime, not on the one that registers.
class Invoker {
  public:
    virtual void Invoke(std::function<void()> invocation) = 0;

  protected:
    ~Invoker() = default;
};

// How an operation ended. `code` is what GetResults gives unless it completed.
struct Ending {
    AsyncStatus status = AsyncStatus::Completed;
    HRESULT code = S_OK;
};

template <typename T>
class Operation final : public Object<IAsyncOperation<T>, Stub<IAsyncInfo>> {
  public:
    using CompletedHandler = AsyncOperationCompletedHandler<T>;
    // Gives the result of a completed operation; called each time that it is taken.
    using Result = std::function<HRESULT(Abi<T>*)>;

    // `refusal`: what registering a handler gives instead of being carried out, if not S_OK.
    Operation(Invoker& invokerOfLateHandlers, HRESULT refusal, Result resultWhenCompleted)
        : Object<IAsyncOperation<T>, Stub<IAsyncInfo>>(asyncOperationClass),
          invoker(invokerOfLateHandlers),
          registrationRefusal(refusal),
          result(std::move(resultWhenCompleted)) {}

    // Called once. Invokes the handler, if there is one already, on this thread.
    void End(const Ending& how) {
        SharedHandler<CompletedHandler> waiting;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            ending = how;
            waiting = std::move(handler);
        }
        if (waiting) {
            waiting->operator->()->Invoke(this, how.status);
        }
    }

    HRESULT put_Completed(CompletedHandler* completed) override {
        return Call(putCompletedMember, [&] {
            if (registrationRefusal != S_OK || completed == nullptr) {
                return completed == nullptr ? E_POINTER : registrationRefusal;
            }
            return Register(TakeHandler(completed));
        });
    }
    HRESULT get_Completed(CompletedHandler**) override {
        return Unexpected(asyncOperationClass.name, "get_Completed");
    }
    HRESULT GetResults(Abi<T>* results) override {
        return Call(getResultsMember, [&] {
            const Ending how = CurrentEnding();
            if (how.status != AsyncStatus::Completed) {
                return how.code;
            }
            return results == nullptr ? E_POINTER : result(results);
        });
    }

  private:
    Ending CurrentEnding() {
        const std::lock_guard<std::mutex> lock(mutex);
        return ending;
    }

    HRESULT Register(SharedHandler<CompletedHandler> taken) {
        Ending how;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            if (assigned) {
                return E_ILLEGAL_DELEGATE_ASSIGNMENT;
            }
            assigned = true;
            if (ending.status == AsyncStatus::Started) {
                handler = std::move(taken);
                return S_OK;
            }
            how = ending;
        }
        invoker.Invoke([self = Ref<Operation>(this), late = std::move(taken), how] {
            late->operator->()->Invoke(self.Get(), how.status);
        });
        return S_OK;
    }

    Invoker& invoker;
    const HRESULT registrationRefusal;
    const Result result;
    std::mutex mutex;
    Ending ending{AsyncStatus::Started, E_ILLEGAL_METHOD_CALL};  // guarded by mutex
    bool assigned = false;                                       // guarded by mutex
    SharedHandler<CompletedHandler> handler;                     // guarded by mutex
};

}  // namespace orv::objects
