#pragma once

#include <atomic>

#include "platform/call.h"

namespace orv {

// A cache for one factory, shared by all threads; null until the factory is found. Needs no
// destructor, because the factory is never released.
using SharedFactory = std::atomic<IUnknown*>;

// Returns the interface `iid` of the factory, which is cached in `shared`. The caller owns the
// reference. Throws the runtime's error code when the class cannot be activated.
Reference<IUnknown> FindFactory(SharedFactory& shared, const char16_t* className, const GUID& iid);

// Returns an interface of the factory of a runtime class. A factory that any thread may use is
// requested once per process; any other factory in each call.
template <typename Class, typename Interface>
Reference<Interface> FactoryOf() {
    static SharedFactory shared{nullptr};
    Reference<IUnknown> factory = FindFactory(shared, Class::Name, IidOf<Interface>);
    // The cast is safe, because FindFactory requested exactly this interface.
    return Reference<Interface>::Adopt(static_cast<Interface*>(factory.Detach()));
}

template <typename Class>
Reference<typename Class::DefaultInterface> Activate() {
    return Get(FactoryOf<Class, IActivationFactory>(), &IActivationFactory::ActivateInstance)
        .template As<typename Class::DefaultInterface>();
}

}  // namespace orv
