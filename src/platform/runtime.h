// The functions of the Windows Runtime that the library needs besides the interfaces in abi/.
// `runtime_windows.cpp` calls the system. A runtime that is linked into the library defines these
// functions itself, including the clock for timeouts and log lines.
#pragma once

#include "platform/abi/base.h"

namespace orv::runtime {

// Requests a factory from the runtime. `className` is zero-terminated.
HRESULT GetActivationFactory(const char16_t* className, const GUID& iid, void** factory);

// Adds a usage count to the process's multithreaded apartment and never removes it. Threads that
// have not joined an apartment then belong to this apartment.
HRESULT JoinMultithreadedApartment();

// Requests the factory from the file `library`, which is searched in the system's directory only.
// The file stays loaded if it provides the factory.
HRESULT GetLibraryFactory(const char16_t* library, const char16_t* className, const GUID& iid,
                          void** factory);

// Creates a marshaler that lets any thread use `outer` directly. The marshaler is aggregated:
// `inner` is its own IUnknown, while its IMarshal counts references on `outer`.
HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner);

// The handle of a manual-reset event, which is not signalled at first.
using EventHandle = void*;
HRESULT CreateKernelEvent(EventHandle* event);
void SetKernelEvent(EventHandle event);
// Waits until the event is signalled or the timeout ends. Does not report which happened.
void WaitForKernelEvent(EventHandle event, UINT32 limitMs);
void CloseKernelEvent(EventHandle event);

// Returns the milliseconds since 1970, UTC.
INT64 SystemTimeMs() noexcept;

}  // namespace orv::runtime
