// Reference<T>, a counted reference to a runtime object, and a search for the same object in a
// list.
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
    // Adds a reference; the caller keeps its own reference.
    explicit Reference(Interface* borrowed) : object(borrowed) {
        if (object) {
            object->AddRef();
        }
    }
    Reference(const Reference& other) : Reference(other.object) {}
    Reference(Reference&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    ~Reference() { Reset(); }

    // Takes `other` by value: its destructor releases the old object after the new one is in place.
    Reference& operator=(Reference other) noexcept {
        std::swap(object, other.object);
        return *this;
    }

    // Takes over a reference that is already counted.
    static Reference Adopt(Interface* counted) {
        Reference reference;
        reference.object = counted;
        return reference;
    }

    // Releases the current object and returns an address for an output parameter. The Reference
    // owns the object that is stored there.
    Interface** Put() {
        Reset();
        return &object;
    }

    void Reset() {
        if (Interface* released = std::exchange(object, nullptr)) {
            released->Release();
        }
    }

    // Returns the object and becomes null; the caller must release the object.
    Interface* Detach() { return std::exchange(object, nullptr); }

    Interface* Get() const { return object; }
    explicit operator bool() const { return object != nullptr; }

    // Returns another interface of the object. Throws if the object lacks the interface.
    template <typename Other>
    Reference<Other> As() const {
        Reference<Other> other;
        CheckResult(Query(other));
        return other;
    }

    // Like As, but returns the code instead of throwing.
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

// Returns the first of `records` whose `member` is the same object as `sought`, or null. If the
// runtime uses proxies, pointers to the same object can differ; its IUnknown pointers never do.
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
