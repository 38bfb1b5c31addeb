#include "platform/activation.h"

#include <string>

#include "platform/runtime.h"

namespace orv {

namespace {

bool TakeApartmentUse() {
    CheckResult(runtime::JoinMultithreadedApartment());
    return true;
}

// Takes the process's one use of the multithreaded apartment, at the first call that succeeds. It
// is never given back: cached factories must outlive the host's own apartments.
bool JoinApartment() noexcept {
    try {
        static const bool joined = TakeApartmentUse();
        return joined;
    } catch (...) {
        return false;  // an initialisation that raised is tried again by the next call
    }
}

// Tries libraries named after the class's namespace: for A.B.Class "A.B.dll", then "A.dll".
HRESULT AskNamespaceLibraries(std::u16string_view className, const GUID& iid, void** factory) {
    HRESULT code = REGDB_E_CLASSNOTREG;
    std::u16string_view name = className;
    for (std::size_t dot = name.rfind(u'.'); Failed(code) && dot != name.npos;
         dot = name.rfind(u'.')) {
        name = name.substr(0, dot);
        const std::u16string library = std::u16string(name) + u".dll";
        code = runtime::GetLibraryFactory(library.c_str(), className.data(), iid, factory);
    }
    return code;
}

Reference<IUnknown> RequestFactory(const char16_t* className, const GUID& iid) {
    Reference<IUnknown> factory;
    void** output = reinterpret_cast<void**>(factory.Put());
    HRESULT code = runtime::GetActivationFactory(className, iid, output);
    if (code == CO_E_NOTINITIALIZED && JoinApartment()) {
        code = runtime::GetActivationFactory(className, iid, output);
    }
    // Whatever the libraries say, the failure that is raised is the runtime's own.
    if (Failed(code) && Failed(AskNamespaceLibraries(className, iid, output))) {
        RaiseFailure(code);
    }
    return factory;
}

bool IsAgile(const Reference<IUnknown>& factory) {
    Reference<IAgileObject> agile;
    return !Failed(factory.Query(agile));
}

}  // namespace

Reference<IUnknown> FindFactory(SharedFactory& shared, const char16_t* className, const GUID& iid) {
    if (IUnknown* found = shared.load(std::memory_order_acquire)) {
        return Reference<IUnknown>(found);
    }
    Reference<IUnknown> factory = RequestFactory(className, iid);
    // Without the apartment a cached factory could be torn down with the host's own.
    if (!IsAgile(factory) || !JoinApartment()) {
        return factory;
    }
    IUnknown* published = nullptr;
    if (shared.compare_exchange_strong(published, factory.Get(), std::memory_order_acq_rel)) {
        factory.Get()->AddRef();  // the cache's own
        return factory;
    }
    return Reference<IUnknown>(published);
}

}  // namespace orv
