// An asynchronous operation, which ends once and invokes its handler once.
#pragma once

#include <functional>

#include "platform/abi/foundation.h"
#include "runtimes/objects/handler.h"
#include "runtimes/objects/mutex.h"
#include "runtimes/objects/object.h"
#include "runtimes/objects/stubs/foundation.h"

namespace orv::objects {

extern Class asyncOperationClass;
extern Member putCompletedMember;
extern Member getResultsMember;
extern Member getStatusMember;
extern Member getErrorCodeMember;
extern Member closeMember;

// Invokes a handler that is registered after its operation has ended. Must use a thread of the
// runtime, not the registering thread.
using Invoker = void (*)(std::function<void()> invocation);

// The state in which an operation ended. GetResults returns `code` if `status` is not Completed.
struct Ending {
    AsyncStatus status = AsyncStatus::Completed;
    HRESULT code = S_OK;
};

template <typename T>
class Operation final : public Object<IAsyncOperation<T>, Stub<IAsyncInfo>> {
  public:
    using CompletedHandler = AsyncOperationCompletedHandler<T>;
    // Returns the result of a completed operation. Every call of GetResults calls this function.
    using Result = std::function<HRESULT(Abi<T>*)>;

    // If `refusal` is not S_OK, registering a handler fails with this code.
    Operation(Invoker invokerOfLateHandlers, HRESULT refusal, Result resultWhenCompleted)
        : Object<IAsyncOperation<T>, Stub<IAsyncInfo>>(asyncOperationClass),
          invoker(invokerOfLateHandlers),
          registrationRefusal(refusal),
          result(std::move(resultWhenCompleted)) {}

    // Ends the operation. Call it once. Invokes the handler on this thread if one is registered.
    void End(const Ending& how) {
        SharedHandler<CompletedHandler> waiting;
        {
            const Lock lock(mutex);
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

    // The library does not call the next three functions; other clients do.
    HRESULT get_Status(AsyncStatus* status) override {
        return Property(getStatusMember, status, CurrentEnding().status);
    }
    HRESULT get_ErrorCode(HRESULT* code) override {
        const Ending how = CurrentEnding();
        return Property(getErrorCodeMember, code,
                        how.status == AsyncStatus::Started ? S_OK : how.code);
    }
    HRESULT Close() override {
        return Call(closeMember, [&] {
            return CurrentEnding().status == AsyncStatus::Started ? E_ILLEGAL_STATE_CHANGE : S_OK;
        });
    }

  private:
    Ending CurrentEnding() {
        const Lock lock(mutex);
        return ending;
    }

    HRESULT Register(SharedHandler<CompletedHandler> taken) {
        Ending how;
        {
            const Lock lock(mutex);
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
        invoker([self = Ref<Operation>(this), late = std::move(taken), how] {
            late->operator->()->Invoke(self.Get(), how.status);
        });
        return S_OK;
    }

    const Invoker invoker;
    const HRESULT registrationRefusal;
    const Result result;
    Mutex mutex;
    Ending ending GUARDED_BY(mutex){AsyncStatus::Started, E_ILLEGAL_METHOD_CALL};
    bool assigned GUARDED_BY(mutex) = false;
    SharedHandler<CompletedHandler> handler GUARDED_BY(mutex);
};

}  // namespace orv::objects
