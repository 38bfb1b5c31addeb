// The world linked into the library: what runtime.h asks for.
#include "platform/runtime.h"
#include "runtimes/objects/marshaler.h"
#include "runtimes/simulated/factories.h"
#include "runtimes/simulated/flavour.h"
#include "runtimes/simulated/world.h"

namespace orv {

namespace simulated {

bool IsLinkedIntoLibrary() {
    return true;
}

namespace {

// Library names are ASCII, and so is what they are compared with.
std::string Narrow(const char16_t* text) {
    std::string narrow;
    for (; *text != u'\0'; ++text) {
        narrow.push_back(*text < 0x80 ? static_cast<char>(*text) : '?');
    }
    return narrow;
}

// As the call that it is. The world comes first, since without it nobody counts.
template <typename Body>
HRESULT RuntimeCall(objects::Member& member, const objects::Argument& argument,
                    Body&& body) noexcept {
    try {
        World::Get();
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    return objects::Call(member, argument, body);
}

}  // namespace

}  // namespace simulated

namespace runtime {

using objects::Argument;
using objects::Member;
using simulated::Guard;
using simulated::KernelEvent;
using simulated::World;

HRESULT GetActivationFactory(const char16_t* className, const GUID& iid, void** factory) {
    static Member member(nullptr, "RoGetActivationFactory");
    return simulated::RuntimeCall(member, Argument(),
                                  [&] { return simulated::FindFactory(className, iid, factory); });
}

HRESULT JoinMultithreadedApartment() {
    static Member member(nullptr, "CoIncrementMTAUsage");
    return simulated::RuntimeCall(member, Argument(), [] { return S_OK; });
}

HRESULT GetLibraryFactory(const char16_t* library, const char16_t* className, const GUID& iid,
                          void** factory) {
    static Member member(nullptr, "DllGetActivationFactory");
    try {
        World& world = World::Get();
        const std::string name = simulated::Narrow(library);
        return objects::Call(member, Argument::Text(world.calls.Text(name)), [&] {
            Guard guard(world.mutex);
            const bool isThere = world.state.activationLibrary == name;
            guard.unlock();
            return isThere ? simulated::FindFactory(className, iid, factory) : REGDB_E_CLASSNOTREG;
        });
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner) {
    return objects::CreateFreeThreadedMarshaler(outer, inner);
}

HRESULT CreateKernelEvent(EventHandle* event) {
    try {
        World& world = World::Get();
        const Guard guard(world.mutex);
        if (world.state.refusedWaits > 0) {
            --world.state.refusedWaits;
            return world.state.waitRefusal;
        }
        *event = new KernelEvent;
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

void SetKernelEvent(EventHandle event) {
    World::Get().clock.Set(*static_cast<KernelEvent*>(event));
}

void WaitForKernelEvent(EventHandle event, UINT32 limitMs) {
    World::Get().clock.Wait(*static_cast<KernelEvent*>(event), std::chrono::milliseconds(limitMs));
}

void CloseKernelEvent(EventHandle event) {
    delete static_cast<KernelEvent*>(event);
}

INT64 SystemTimeMs() noexcept {
    try {
        return World::Get().clock.SystemTime().count();
    } catch (...) {
        return simulated::Clock::RealSystemTime().count();
    }
}

}  // namespace runtime
}  // namespace orv
