// Implements platform/runtime.h for a world that is linked into the library.
#include "platform/runtime.h"
#include "runtimes/objects/marshaler.h"
#include "runtimes/simulated/exports/factories.h"
#include "runtimes/simulated/exports/flavour.h"
#include "runtimes/simulated/world/world.h"

namespace orv {

namespace simulated {

bool IsLinkedIntoLibrary() {
    return true;
}

namespace {

// Converts a library name, which is ASCII, to narrow characters.
std::string Narrow(const char16_t* text) {
    std::string narrow;
    for (; *text != u'\0'; ++text) {
        narrow.push_back(*text < 0x80 ? static_cast<char>(*text) : '?');
    }
    return narrow;
}

// Records a call and runs it. First creates the world, which installs the recorder.
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
using simulated::KernelEvent;
using simulated::Lock;
using simulated::World;
using simulated::worldMutex;

namespace {

Member getActivationFactoryMember(nullptr, "RoGetActivationFactory");
Member joinApartmentMember(nullptr, "CoIncrementMTAUsage");
Member getLibraryFactoryMember(nullptr, "DllGetActivationFactory");

}  // namespace

HRESULT GetActivationFactory(const char16_t* className, const GUID& iid, void** factory) {
    return simulated::RuntimeCall(getActivationFactoryMember, Argument(),
                                  [&] { return simulated::FindFactory(className, iid, factory); });
}

HRESULT JoinMultithreadedApartment() {
    return simulated::RuntimeCall(joinApartmentMember, Argument(), [] { return S_OK; });
}

HRESULT GetLibraryFactory(const char16_t* library, const char16_t* className, const GUID& iid,
                          void** factory) {
    try {
        World& world = World::Get();
        const std::string name = simulated::Narrow(library);
        return objects::Call(getLibraryFactoryMember, Argument::Text(world.calls.Text(name)), [&] {
            Lock lock(worldMutex);
            const bool isThere = world.state.activationLibrary == name;
            lock.Release();
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
        const Lock lock(worldMutex);
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
