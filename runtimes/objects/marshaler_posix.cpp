// A marshaler for a place without apartments: there is nothing to marshal, but objects are asked
// for one all the same.
#include <atomic>
#include <new>

#include "runtimes/objects/marshaler.h"

namespace orv::objects {

namespace {

// Aggregation: the object itself is the inner IUnknown with a count of its own, while the IMarshal
// that it answers passes questions and references on to the outer object.
class Marshaler final : public IUnknown {
  public:
    explicit Marshaler(IUnknown* outer)
        : marshal(outer == nullptr ? static_cast<IUnknown*>(this) : outer) {}

    HRESULT QueryInterface(const GUID* iid, void** object) override {
        if (iid == nullptr || object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        if (*iid == IUnknown::Iid) {
            *object = static_cast<IUnknown*>(this);
            AddRef();
        } else if (*iid == IMarshal::Iid) {
            *object = static_cast<IMarshal*>(&marshal);
            marshal.AddRef();
        }
        return *object == nullptr ? E_NOINTERFACE : S_OK;
    }
    ULONG AddRef() override { return references.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG Release() override {
        const ULONG left = references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            delete this;
        }
        return left;
    }

  private:
    class Marshal final : public IMarshal {
      public:
        explicit Marshal(IUnknown* outerObject) : outer(outerObject) {}

        HRESULT QueryInterface(const GUID* iid, void** object) override {
            return outer->QueryInterface(iid, object);
        }
        ULONG AddRef() override { return outer->AddRef(); }
        ULONG Release() override { return outer->Release(); }

        HRESULT GetUnmarshalClass(const GUID*, void*, DWORD, void*, DWORD, CLSID*) override {
            return E_NOTIMPL;
        }
        HRESULT GetMarshalSizeMax(const GUID*, void*, DWORD, void*, DWORD, DWORD*) override {
            return E_NOTIMPL;
        }
        HRESULT MarshalInterface(IStream*, const GUID*, void*, DWORD, void*, DWORD) override {
            return E_NOTIMPL;
        }
        HRESULT UnmarshalInterface(IStream*, const GUID*, void**) override { return E_NOTIMPL; }
        HRESULT ReleaseMarshalData(IStream*) override { return E_NOTIMPL; }
        HRESULT DisconnectObject(DWORD) override { return E_NOTIMPL; }

      private:
        IUnknown* const outer;
    };

    std::atomic<ULONG> references{1};
    Marshal marshal;
};

}  // namespace

HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner) {
    if (inner == nullptr) {
        return E_POINTER;
    }
    try {
        *inner = new Marshaler(outer);
        return S_OK;
    } catch (const std::bad_alloc&) {
        *inner = nullptr;
        return E_OUTOFMEMORY;
    }
}

}  // namespace orv::objects
