// Minimal runtime objects: each function costs a virtual call and a few instructions.
#pragma once

#include <cstdlib>
#include <tuple>
#include <type_traits>

#include "platform/abi/foundation.h"
#include "runtimes/objects/counted.h"

namespace orv::bench {

// Allocates with malloc, so that the counting operator new counts only the library's allocations.
void* AllocateObject(std::size_t size);
void FreeObject(void* memory);

// Base of an object with the given interfaces; the first is its IUnknown identity. A new object has
// one reference, which its creator owns.
template <typename... Interfaces>
class Bare : public Interfaces... {
  public:
    virtual ~Bare() = default;

    HRESULT QueryInterface(const GUID* iid, void** object) override {
        void* found = nullptr;
        static_cast<void>(
            ((*iid == IidOf<Interfaces> && (found = static_cast<Interfaces*>(this)) != nullptr) ||
             ...));
        if (found == nullptr && (*iid == IUnknown::Iid || *iid == IAgileObject::Iid)) {
            found = static_cast<First*>(this);
        }
        *object = found;
        if (found == nullptr) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG AddRef() final { return references.Add(); }
    ULONG Release() final { return references.Remove(this); }
    HRESULT GetIids(ULONG*, GUID**) final { return E_NOTIMPL; }
    HRESULT GetRuntimeClassName(HSTRING*) final { return E_NOTIMPL; }
    HRESULT GetTrustLevel(TrustLevel*) final { return E_NOTIMPL; }

    static void* operator new(std::size_t size) { return AllocateObject(size); }
    static void operator delete(void* memory) { FreeObject(memory); }

  private:
    using First = std::tuple_element_t<0, std::tuple<Interfaces...>>;

    objects::ReferenceCount references;
};

// Returns `object` in `receiver` with an additional reference.
template <typename Interface, typename T>
HRESULT Share(Interface** receiver, T* object) {
    object->AddRef();
    *receiver = object;
    return S_OK;
}

// Returns a new object in `receiver`, which then owns its reference.
template <typename Interface, typename T>
HRESULT Hand(Interface** receiver, T* object) {
    *receiver = object;
    return S_OK;
}

// A list with one item. The item must outlive the list.
template <typename T>
class OneItem final : public Bare<IVectorView<T>> {
  public:
    explicit OneItem(Abi<T> only) : item(only) {}

    HRESULT GetAt(UINT32, Abi<T>* result) override { return Share(result, item); }
    HRESULT get_Size(UINT32* size) override {
        *size = 1;
        return S_OK;
    }
    HRESULT IndexOf(Abi<T>, UINT32*, boolean*) override { return E_NOTIMPL; }
    HRESULT GetMany(UINT32, UINT32, Abi<T>*, UINT32*) override { return E_NOTIMPL; }

  private:
    const Abi<T> item;
};

// The time that a device needs to answer an operation of this thread.
extern thread_local UINT32 answerDelayMs;

// An operation that is complete when it starts: put_Completed invokes the handler at once.
template <typename T>
class EndedOperation final : public Bare<IAsyncOperation<T>> {
  public:
    explicit EndedOperation(Abi<T> resultWhenAsked) : result(resultWhenAsked) {}

    HRESULT put_Completed(AsyncOperationCompletedHandler<T>* handler) override {
        return handler->Invoke(this, AsyncStatus::Completed);
    }
    HRESULT get_Completed(AsyncOperationCompletedHandler<T>**) override { return E_NOTIMPL; }
    HRESULT GetResults(Abi<T>* results) override {
        if constexpr (std::is_pointer_v<Abi<T>>) {
            return Share(results, result);
        } else {
            *results = result;
            return S_OK;
        }
    }

  private:
    const Abi<T> result;
};

}  // namespace orv::bench
