// How a runtime made of these building blocks learns what is done with its objects: each call of a
// member, calls nobody should make, and the references and handlers held across the border.
#pragma once

#include <atomic>

#include "platform/abi/base.h"

namespace orv::objects {

// One member of a runtime class, named as the platform names it. An object of its own per member,
// without a constructor at run time and without a destructor, so that it may be a static variable.
struct Member {
    constexpr Member(const char* ownerName, const char* memberName)
        : owner(ownerName), name(memberName) {}

    const char* const owner;  // null for a function of the runtime itself
    const char* const name;

    // Kept here by the observer, so that counting a call needs no search.
    std::atomic<UINT32> calls{0};
    std::atomic<HRESULT> failure{S_OK};
    std::atomic<bool> hangs{false};
    std::atomic<bool> listed{false};
    Member* next = nullptr;
};

// A runtime class: its name, and the member that all of its objects have.
struct Class {
    constexpr explicit Class(const char* className)
        : name(className), queryInterface(className, "QueryInterface") {}

    const char* const name;
    Member queryInterface;
};

// The argument of a call that is worth remembering: a number, a text that lives for ever, or none.
struct Argument {
    const char* text = nullptr;
    UINT64 number = 0;
    bool present = false;

    static Argument Number(UINT64 value) { return {nullptr, value, true}; }
    static Argument Text(const char* value) { return {value, 0, true}; }
};

// What is held across the border. Several may exist: each object stays with the one it was made
// under, so that a new count can begin while objects of the old one live on.
struct Ledger {
    std::atomic<INT32> objects{0};     // with at least one reference from outside
    std::atomic<INT32> references{0};  // from outside
    std::atomic<INT32> handlers{0};    // foreign handlers held inside
};

// Every function may be called from any thread, with no lock of the runtime held.
class Observer {
  public:
    // Before a member does its work; anything but S_OK is its answer instead.
    virtual HRESULT Called(Member& member, const Argument& argument) = 0;
    // The answer of a member that is not there to be called.
    virtual HRESULT UnexpectedlyCalled(const char* owner, const char* name) = 0;
    virtual void ImproperHandler() = 0;
    virtual Ledger* CurrentLedger() = 0;

  protected:
    ~Observer() = default;
};

// Set before the first object is made, and never to null again.
extern std::atomic<Observer*> observer;

inline Observer& TheObserver() {
    return *observer.load(std::memory_order_acquire);
}

// The body of a member: tells the observer, and lets nothing be thrown across the interface.
template <typename Body>
HRESULT Call(Member& member, const Argument& argument, Body&& body) noexcept {
    try {
        const HRESULT refusal = TheObserver().Called(member, argument);
        return refusal != S_OK ? refusal : body();
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

template <typename Body>
HRESULT Call(Member& member, Body&& body) noexcept {
    return Call(member, Argument(), static_cast<Body&&>(body));
}

// A member that reads a value.
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

// An interface whose every slot answers E_NOTIMPL and tells the observer. A class derives from it
// and overrides the few members that it has. The specialisations are in stubs/.
template <typename Interface>
struct Stub;

}  // namespace orv::objects
