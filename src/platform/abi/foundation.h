// Interfaces of Windows.Foundation and its collections: asynchronous operations, events, vectors.
#pragma once

#include "platform/abi/base.h"

namespace orv {

enum class AsyncStatus : INT32 { Started = 0, Completed = 1, Canceled = 2, Error = 3 };

struct IAsyncInfo : IInspectable {
    static constexpr GUID Iid = Guid("00000036-0000-0000-c000-000000000046");
    virtual HRESULT get_Id(UINT32* id) = 0;
    virtual HRESULT get_Status(AsyncStatus* status) = 0;
    virtual HRESULT get_ErrorCode(HRESULT* code) = 0;
    virtual HRESULT Cancel() = 0;
    virtual HRESULT Close() = 0;
};

template <typename T>
struct IAsyncOperation;

// The runtime calls Invoke once, on one of its threads, possibly before put_Completed returns.
template <typename T>
struct AsyncOperationCompletedHandler : IUnknown {
    virtual HRESULT Invoke(IAsyncOperation<T>* operation, AsyncStatus status) = 0;
};

template <typename T>
struct IAsyncOperation : IInspectable {
    virtual HRESULT put_Completed(AsyncOperationCompletedHandler<T>* handler) = 0;
    virtual HRESULT get_Completed(AsyncOperationCompletedHandler<T>** handler) = 0;
    virtual HRESULT GetResults(Abi<T>* results) = 0;
};

// The handler borrows `sender` and `args` for the duration of the call.
template <typename S, typename A>
struct TypedEventHandler : IUnknown {
    virtual HRESULT Invoke(Abi<S> sender, Abi<A> args) = 0;
};

// The library reads items by index; other clients of the runtime use iterators.
template <typename T>
struct IIterator : IInspectable {
    virtual HRESULT get_Current(Abi<T>* item) = 0;
    virtual HRESULT get_HasCurrent(boolean* value) = 0;
    virtual HRESULT MoveNext(boolean* hasCurrent) = 0;
    virtual HRESULT GetMany(UINT32 capacity, Abi<T>* items, UINT32* actual) = 0;
};

template <typename T>
struct IIterable : IInspectable {
    virtual HRESULT First(IIterator<T>** iterator) = 0;
};

template <typename T>
struct IVectorView : IInspectable {
    virtual HRESULT GetAt(UINT32 index, Abi<T>* item) = 0;
    virtual HRESULT get_Size(UINT32* size) = 0;
    virtual HRESULT IndexOf(Abi<T> item, UINT32* index, boolean* found) = 0;
    virtual HRESULT GetMany(UINT32 startIndex, UINT32 capacity, Abi<T>* items, UINT32* actual) = 0;
};

template <typename T>
struct IVector : IInspectable {
    virtual HRESULT GetAt(UINT32 index, Abi<T>* item) = 0;
    virtual HRESULT get_Size(UINT32* size) = 0;
    virtual HRESULT GetView(IVectorView<T>** view) = 0;
    virtual HRESULT IndexOf(Abi<T> item, UINT32* index, boolean* found) = 0;
    virtual HRESULT SetAt(UINT32 index, Abi<T> item) = 0;
    virtual HRESULT InsertAt(UINT32 index, Abi<T> item) = 0;
    virtual HRESULT RemoveAt(UINT32 index) = 0;
    virtual HRESULT Append(Abi<T> item) = 0;
    virtual HRESULT RemoveAtEnd() = 0;
    virtual HRESULT Clear() = 0;
    virtual HRESULT GetMany(UINT32 startIndex, UINT32 capacity, Abi<T>* items, UINT32* actual) = 0;
    virtual HRESULT ReplaceAll(UINT32 count, Abi<T>* items) = 0;
};

struct IClosable : IInspectable {
    static constexpr GUID Iid = Guid("30d5a829-7fa4-4026-83bb-d75bae4ea99e");
    virtual HRESULT Close() = 0;
};

}  // namespace orv
