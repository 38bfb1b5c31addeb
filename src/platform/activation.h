// Activation: from the name of a runtime class to its factory and its objects.
#pragma once

#include <atomic>

#include "platform/call.h"

namespace orv {

// The place of one factory that all threads share once it was found. Never released: it lasts until
// the process ends, so it has no destructor either.
using SharedFactory = std::atomic<IUnknown*>;

// The factory's interface `iid`, with a reference that is the caller's. Raises the runtime's code
// when the class cannot be activated.
Reference<IUnknown> FindFactory(SharedFactory& shared, const char16_t* className, const GUID& iid);

// The factory of a runtime class, as the interface of its static operations. Looked up once per
// process where it may be used from any thread, otherwise at each use.
template <typename Class, typename Interface>
Reference<Interface> FactoryOf() {
    static SharedFactory shared{nullptr};
    Reference<IUnknown> factory = FindFactory(shared, Class::Name, IidOf<Interface>);
    // FindFactory asked for just this interface, so the pointer is one.
    return Reference<Interface>::Adopt(static_cast<Interface*>(factory.Detach()));
}

// A new object of a runtime class, by its default construction.
template <typename Class>
Reference<typename Class::DefaultInterface> Activate() {
    return Get(FactoryOf<Class, IActivationFactory>(), &IActivationFactory::ActivateInstance)
        .template As<typename Class::DefaultInterface>();
}

}  // namespace orv
