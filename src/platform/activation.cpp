#include "platform/activation.h"

#include <algorithm>
#include <string_view>

#include "platform/loaded_module.h"
#include "platform/runtime.h"

namespace orv {

namespace {

// Keeps the process's multithreaded apartment alive, because cached factories must outlive the
// host's own apartments. The first successful call adds a usage count, which is never removed.
// Concurrent first calls may each add a count, which is harmless. Returns false when the system
// refuses.
//
// Keeps the library loaded, because a library that is unloaded and loaded again would add another
// count.
bool JoinApartment() noexcept {
    static std::atomic<bool> joined{false};
    if (joined.load(std::memory_order_acquire)) {
        return true;
    }
    try {
        system::KeepModuleLoaded();
    } catch (...) {
        return false;
    }
    if (Failed(runtime::JoinMultithreadedApartment())) {
        return false;
    }
    joined.store(true, std::memory_order_release);
    return true;
}

// Requests the factory from files named after the class's namespace: for class A.B.C, from A.B.dll
// and then from A.dll.
HRESULT AskNamespaceLibraries(std::u16string_view className, const GUID& iid, void** factory) {
    constexpr std::u16string_view Ending = u".dll";
    constexpr std::size_t LongestName = 128;  // class names are all shorter
    char16_t library[LongestName + Ending.size() + 1];
    HRESULT code = REGDB_E_CLASSNOTREG;
    std::u16string_view name = className.substr(0, LongestName);
    for (std::size_t dot = name.rfind(u'.'); Failed(code) && dot != name.npos;
         dot = name.rfind(u'.')) {
        name = name.substr(0, dot);
        char16_t* end = std::copy(name.begin(), name.end(), library);
        *std::copy(Ending.begin(), Ending.end(), end) = u'\0';
        code = runtime::GetLibraryFactory(library, className.data(), iid, factory);
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
    // Throws the runtime's error if no library provides the class.
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
    // Does not cache the factory if joining the apartment fails, because the end of the host's
    // apartment could then destroy the factory.
    if (!IsAgile(factory) || !JoinApartment()) {
        return factory;
    }
    IUnknown* published = nullptr;
    if (shared.compare_exchange_strong(published, factory.Get(), std::memory_order_acq_rel)) {
        factory.Get()->AddRef();  // the cache owns this reference
        return factory;
    }
    return Reference<IUnknown>(published);
}

}  // namespace orv
