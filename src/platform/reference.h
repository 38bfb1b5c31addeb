// Reference<T>, the counted reference to a runtime object, and the test for object identity.
#pragma once

#include <cstddef>
#include <utility>

#include "platform/failure.h"

namespace orv {

template <typename Interface>
class Reference {
  public:
    Reference() = default;
    Reference(std::nullptr_t) {}
    // Takes a reference of its own; the caller keeps its own.
    explicit Reference(Interface* borrowed) : object(borrowed) {
        if (object) {
            object->AddRef();
        }
    }
    Reference(const Reference& other) : Reference(other.object) {}
    Reference(Reference&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    ~Reference() { Reset(); }

    // By value: what was held before is released when `other` goes, after the new one is in place.
    Reference& operator=(Reference other) noexcept {
        std::swap(object, other.object);
        return *this;
    }

    // Takes over a reference that somebody else counted.
    static Reference Adopt(Interface* counted) {
        Reference reference;
        reference.object = counted;
        return reference;
    }

    // For an output parameter: whatever was held is released first, whatever is put is owned.
    Interface** Put() {
        Reset();
        return &object;
    }

    void Reset() {
        if (Interface* released = std::exchange(object, nullptr)) {
            released->Release();
        }
    }

    // The reference is the caller's to release from here on.
    Interface* Detach() { return std::exchange(object, nullptr); }

    // Borrowed; null when nothing is held.
    Interface* Get() const { return object; }
    explicit operator bool() const { return object != nullptr; }

    // The object's other interface. Raises when the object does not have it.
    template <typename Other>
    Reference<Other> As() const {
        Reference<Other> other;
        CheckResult(Query(other));
        return other;
    }

    // The same, with the code for the caller to judge.
    template <typename Other>
    HRESULT Query(Reference<Other>& other) const {
        if (!object) {
            return E_POINTER;
        }
        return object->QueryInterface(&IidOf<Other>, reinterpret_cast<void**>(other.Put()));
    }

  private:
    Interface* object = nullptr;
};

// Walks `records` from the front for the one whose `member` denotes the same object as `sought`:
// the same pointer, or the same IUnknown identity. Null when there is none. An object has one
// pointer for its default interface, so the pointer alone answers, and is tried on all records
// before any object is asked; only a runtime that hands out proxies gets to the second walk.
template <typename Records, typename Record, typename Interface>
Record* FindSameObject(Records& records, Reference<Interface> Record::*member,
                       const Reference<Interface>& sought) {
    for (Record& record : records) {
        if ((record.*member).Get() == sought.Get()) {
            return &record;
        }
    }
    if (!sought || records.empty()) {
        return nullptr;
    }
    const auto identity = sought.template As<IUnknown>();
    for (Record& record : records) {
        if ((record.*member).template As<IUnknown>().Get() == identity.Get()) {
            return &record;
        }
    }
    return nullptr;
}

}  // namespace orv
