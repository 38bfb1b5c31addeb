// What the library asks of the Windows Runtime beside the interfaces in abi/: factories, the
// apartment, marshalers, the kernel events that waits sleep on, and the time. `runtime_windows.cpp`
// asks the system; a runtime that is linked into the library defines these functions itself, and
// owns the clock by which time limits pass and log lines are stamped.
#pragma once

#include "platform/abi/base.h"

namespace orv::runtime {

// The runtime's own request for a factory. `className` is zero-terminated.
HRESULT GetActivationFactory(const char16_t* className, const GUID& iid, void** factory);

// Takes one use of the process's multithreaded apartment, which puts every thread without an
// apartment into it. Never given back.
HRESULT JoinMultithreadedApartment();

// Asks the library file `library` (a bare name, looked for among the system's own libraries only)
// for the factory. A library that answered stays loaded.
HRESULT GetLibraryFactory(const char16_t* library, const char16_t* className, const GUID& iid,
                          void** factory);

// A marshaler that lets any thread use `outer` directly, aggregated into it: `inner` is its own
// IUnknown, while the IMarshal that it answers counts its references on `outer`.
HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner);

// A manual-reset kernel event, not signalled.
using EventHandle = void*;
HRESULT CreateKernelEvent(EventHandle* event);
void SetKernelEvent(EventHandle event);
// Sleeps until the event is set or the limit has passed. Which of them it was is not told.
void WaitForKernelEvent(EventHandle event, UINT32 limitMs);
void CloseKernelEvent(EventHandle event);

// Milliseconds since 1970, UTC.
INT64 SystemTimeMs() noexcept;

}  // namespace orv::runtime
