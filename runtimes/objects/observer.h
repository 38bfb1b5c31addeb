// Notifies a runtime of its client's calls, and counts references.
#pragma once

#include "runtimes/objects/member.h"

namespace orv::objects {

// The recorded argument of a call: a number, a text that is never freed, or nothing.
struct Argument {
    const char* text = nullptr;
    UINT64 number = 0;
    bool present = false;

    static Argument Number(UINT64 value) { return {nullptr, value, true}; }
    static Argument Text(const char* value) { return {value, 0, true}; }
};

// Counters. Each object uses the ledger that was current when the object was created, so that a new
// ledger can start at 0 while older objects exist.
struct Ledger {
    std::atomic<INT32> objects{0};     // objects that the client references
    std::atomic<INT32> references{0};  // all references of the client to these objects
    std::atomic<INT32> handlers{0};    // handlers that the runtime references
};

// Is notified of each call by the client, on the client's thread, while no runtime lock is held.
class CallObserver {
  public:
    // If `hears` is false, members do not call `Called`. This saves time: reading 244 bytes takes
    // about 490 calls.
    explicit CallObserver(bool hears = true) : hearsCalls(hears) {}

    const bool hearsCalls;
    // Called before a member is executed. If the result is not S_OK, the member returns it at once.
    virtual HRESULT Called(Member& member, const Argument& argument) = 0;
    // Called for a member that is not implemented; returns the member's result.
    virtual HRESULT UnexpectedlyCalled(const char* owner, const char* name) = 0;
    virtual void ImproperHandler() = 0;
    virtual Ledger* CurrentLedger() = 0;

  protected:
    ~CallObserver() = default;
};

// The observer of the process. It is set before the first object is created.
extern std::atomic<CallObserver*> observer;

inline CallObserver& TheObserver() {
    return *observer.load(std::memory_order_acquire);
}

// Notifies the observer, executes the member's `body`, and turns exceptions into E_OUTOFMEMORY.
template <typename Body>
HRESULT Call(Member& member, const Argument& argument, Body&& body) noexcept {
    try {
        CallObserver& told = TheObserver();
        const HRESULT refusal = told.hearsCalls ? told.Called(member, argument) : S_OK;
        return refusal != S_OK ? refusal : body();
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

template <typename Body>
HRESULT Call(Member& member, Body&& body) noexcept {
    return Call(member, Argument(), static_cast<Body&&>(body));
}

// Implements a member function that returns a property: copies `value` to `result`.
template <typename Value>
HRESULT Property(Member& member, Value* result, const Value& value) noexcept {
    return Call(member, [&] {
        if (result == nullptr) {
            return E_POINTER;
        }
        *result = value;
        return S_OK;
    });
}

HRESULT Unexpected(const char* owner, const char* name) noexcept;

// Implements every function of an interface by notifying the observer and returning E_NOTIMPL. A
// class overrides the functions that it supports. The specializations are in stubs/.
template <typename Interface>
struct Stub;

}  // namespace orv::objects
