// Objects of a runtime: their references, their identity, and the questions every object answers.
#pragma once

#include <atomic>
#include <tuple>
#include <utility>

#include "runtimes/objects/observer.h"

namespace orv::objects {

// Counts two kinds of references apart: those held from outside, through AddRef and Release, and
// those by which the runtime keeps its own objects. The object goes with the last of both.
class ObjectBase {
  public:
    // `ledger` null: references to this object are not counted anywhere.
    explicit ObjectBase(Ledger* ledgerOfObject) : ledger(ledgerOfObject) {}
    ObjectBase(const ObjectBase&) = delete;
    ObjectBase& operator=(const ObjectBase&) = delete;
    // Pure, so that no compiler takes an object for a bare ObjectBase where it deletes one.
    virtual ~ObjectBase() = 0;

    void Keep() noexcept { counts.fetch_add(Inner, std::memory_order_relaxed); }
    void LetGo() noexcept {
        if (counts.fetch_sub(Inner, std::memory_order_acq_rel) == Inner) {
            delete this;
        }
    }

  protected:
    ULONG Hold() noexcept {
        const UINT64 before = counts.fetch_add(1, std::memory_order_relaxed);
        const ULONG outside = static_cast<ULONG>(before);
        if (ledger != nullptr) {
            ledger->references.fetch_add(1, std::memory_order_relaxed);
            if (outside == 0) {
                ledger->objects.fetch_add(1, std::memory_order_relaxed);
            }
        }
        if (outside == 0) {
            GivenOut();
        }
        return outside + 1;
    }

    ULONG Drop() noexcept {
        // Before the reference goes: without it the object may be gone at any moment.
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

    // Somebody outside holds the object who did not before.
    virtual void GivenOut() noexcept {}

  private:
    static constexpr UINT64 Inner = UINT64{1} << 32;

    std::atomic<UINT64> counts{0};  // inner references above, those from outside below
    Ledger* const ledger;
};
inline ObjectBase::~ObjectBase() = default;

// An inner reference.
template <typename T>
class Ref {
  public:
    Ref() = default;
    explicit Ref(T* kept) : object(kept) {
        if (object != nullptr) {
            object->Keep();
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
            object->LetGo();
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

// Hands an object out: the receiver gets a reference of its own.
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

// An object with these interfaces. The first is its identity and its default interface; it derives
// from IInspectable.
template <typename... Interfaces>
class Object : public Interfaces..., public ObjectBase {
  public:
    explicit Object(Class& runtimeClass) : Object(runtimeClass, TheObserver().CurrentLedger()) {}
    Object(Class& runtimeClass, Ledger* ledgerOfObject)
        : ObjectBase(ledgerOfObject), itsClass(runtimeClass) {}

    // The interface without a reference, or null. Not told to the observer.
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
            Hold();
            return S_OK;
        });
    }
    ULONG AddRef() final { return Hold(); }
    ULONG Release() final { return Drop(); }

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
