#pragma once

#include <atomic>
#include <memory>
#include <tuple>
#include <utility>

#include "runtimes/objects/observer.h"

namespace orv::objects {

// Counts the references of the client (external: AddRef and Release) and those of the runtime
// (internal) separately. Deletes the object when no reference is left.
class ObjectBase {
  public:
    // `ledgerOfObject` also counts the client's references; it may be null.
    explicit ObjectBase(Ledger* ledgerOfObject) : ledger(ledgerOfObject) {}
    ObjectBase(const ObjectBase&) = delete;
    ObjectBase& operator=(const ObjectBase&) = delete;
    // Pure, so that no compiler assumes that `delete this` deletes a plain ObjectBase.
    virtual ~ObjectBase() = 0;

    void AddInternal() noexcept { counts.fetch_add(Internal, std::memory_order_relaxed); }
    void ReleaseInternal() noexcept {
        if (counts.fetch_sub(Internal, std::memory_order_acq_rel) == Internal) {
            delete this;
        }
    }

  protected:
    ULONG AddExternal() noexcept {
        const UINT64 before = counts.fetch_add(1, std::memory_order_relaxed);
        const ULONG outside = static_cast<ULONG>(before);
        if (ledger != nullptr) {
            ledger->references.fetch_add(1, std::memory_order_relaxed);
            if (outside == 0) {
                ledger->objects.fetch_add(1, std::memory_order_relaxed);
            }
        }
        if (outside == 0) {
            OnFirstExternal();
        }
        return outside + 1;
    }

    ULONG ReleaseExternal() noexcept {
        // Reads `ledger` first, because another thread may delete the object after the decrement.
        Ledger* const counted = ledger;
        const UINT64 before = counts.fetch_sub(1, std::memory_order_acq_rel);
        const ULONG outside = static_cast<ULONG>(before) - 1;
        if (counted != nullptr) {
            if (outside == 0) {
                counted->objects.fetch_sub(1, std::memory_order_release);
            }
            counted->references.fetch_sub(1, std::memory_order_release);
        }
        if (before == 1) {
            delete this;
        }
        return outside;
    }

    // Called when the number of the client's references changes from 0 to 1.
    virtual void OnFirstExternal() noexcept {}

  private:
    static constexpr UINT64 Internal = UINT64{1} << 32;

    std::atomic<UINT64> counts{0};  // upper half: internal references; lower half: external
    Ledger* const ledger;
};
inline ObjectBase::~ObjectBase() = default;

// A smart pointer for use inside the runtime. Owns an internal reference.
template <typename T>
class Ref {
  public:
    Ref() = default;
    explicit Ref(T* kept) : object(kept) {
        if (object != nullptr) {
            object->AddInternal();
        }
    }
    Ref(const Ref& other) : Ref(other.object) {}
    Ref(Ref&& other) noexcept : object(std::exchange(other.object, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object, other.object);
        return *this;
    }
    ~Ref() {
        if (object != nullptr) {
            object->ReleaseInternal();
        }
    }

    T* Get() const { return object; }
    T* operator->() const { return object; }
    explicit operator bool() const { return object != nullptr; }

  private:
    T* object = nullptr;
};

template <typename T, typename... Arguments>
Ref<T> Make(Arguments&&... arguments) {
    return Ref<T>(new T(std::forward<Arguments>(arguments)...));
}

// Returns `object` as a pointer to its base class. The pointer keeps the object alive.
template <typename Base, typename T>
std::shared_ptr<Base> ShareAs(T* object) {
    const auto owner = std::make_shared<Ref<T>>(object);
    return std::shared_ptr<Base>(owner, object);
}

// Stores `object` in `receiver` with a new reference, which the client owns.
template <typename Interface, typename T>
HRESULT Give(Interface** receiver, const Ref<T>& object) {
    if (receiver == nullptr) {
        return E_POINTER;
    }
    if (object) {
        object->AddRef();
    }
    *receiver = object.Get();
    return S_OK;
}

// An object that implements `Interfaces`. The first one derives from IInspectable and is the
// object's identity and default interface.
template <typename... Interfaces>
class Object : public Interfaces..., public ObjectBase {
  public:
    explicit Object(Class& runtimeClass) : Object(runtimeClass, TheObserver().CurrentLedger()) {}
    Object(Class& runtimeClass, Ledger* ledgerOfObject)
        : ObjectBase(ledgerOfObject), itsClass(runtimeClass) {}

    // Returns the interface or null. Adds no reference and does not notify the observer.
    void* Find(const GUID& iid) {
        void* found = nullptr;
        static_cast<void>(
            ((iid == IidOf<Interfaces> && (found = static_cast<Interfaces*>(this)) != nullptr) ||
             ...));
        if (found == nullptr && (iid == IUnknown::Iid || iid == IInspectable::Iid ||
                                 (iid == IAgileObject::Iid && IsAgile()))) {
            found = static_cast<First*>(this);
        }
        return found;
    }

    HRESULT QueryInterface(const GUID* iid, void** object) override {
        return Call(itsClass.queryInterface, [&] {
            if (iid == nullptr || object == nullptr) {
                return E_POINTER;
            }
            *object = Find(*iid);
            if (*object == nullptr) {
                return E_NOINTERFACE;
            }
            AddExternal();
            return S_OK;
        });
    }
    ULONG AddRef() final { return AddExternal(); }
    ULONG Release() override { return ReleaseExternal(); }

    HRESULT GetIids(ULONG*, GUID**) final { return Unexpected(itsClass.name, "GetIids"); }
    HRESULT GetRuntimeClassName(HSTRING*) final {
        return Unexpected(itsClass.name, "GetRuntimeClassName");
    }
    HRESULT GetTrustLevel(TrustLevel*) final { return Unexpected(itsClass.name, "GetTrustLevel"); }

  protected:
    virtual bool IsAgile() const { return true; }

  private:
    using First = std::tuple_element_t<0, std::tuple<Interfaces...>>;

    Class& itsClass;
};

}  // namespace orv::objects
