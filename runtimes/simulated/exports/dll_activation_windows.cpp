// Implements the export of the DLL that contains the simulated world. The library loads this DLL
// when the system lacks a Bluetooth class.
#include "runtimes/simulated/exports/factories.h"
#include "runtimes/simulated/exports/flavour.h"
#include "runtimes/simulated/world/world.h"

namespace orv {

namespace simulated {

bool IsLinkedIntoLibrary() {
    return false;
}

}  // namespace simulated

namespace {

objects::Member dllGetActivationFactoryMember(nullptr, "DllGetActivationFactory");

}  // namespace

extern "C" __declspec(dllexport) HRESULT
    DllGetActivationFactory(HSTRING className, IActivationFactory** factory) {
    try {
        simulated::World::Get();
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    return objects::Call(dllGetActivationFactoryMember, [&] {
        UINT32 length = 0;
        const char16_t* const name = WindowsGetStringRawBuffer(className, &length);
        return simulated::FindFactory(std::u16string_view(name, length), IActivationFactory::Iid,
                                      reinterpret_cast<void**>(factory));
    });
}

}  // namespace orv
