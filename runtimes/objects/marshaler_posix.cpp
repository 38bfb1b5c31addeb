// A marshaler for systems without COM apartments. It cannot marshal; it exists because handlers
// must provide an IMarshal.
#include <new>

#include "runtimes/objects/counted.h"
#include "runtimes/objects/marshaler.h"

namespace orv::objects {

namespace {

// The inner object of an aggregation, with its own reference count. Its IMarshal forwards queries
// and reference counting to the outer object.
class Marshaler final : public Counted<IUnknown> {
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
