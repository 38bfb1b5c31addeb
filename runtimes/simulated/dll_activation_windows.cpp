// The world as a library file of its own, found by activation as its last resort.
#include "runtimes/simulated/factories.h"
#include "runtimes/simulated/flavour.h"
#include "runtimes/simulated/world.h"

namespace orv {

namespace simulated {

bool IsLinkedIntoLibrary() {
    return false;
}

}  // namespace simulated

extern "C" __declspec(dllexport) HRESULT
    DllGetActivationFactory(HSTRING className, IActivationFactory** factory) {
    static objects::Member member(nullptr, "DllGetActivationFactory");
    try {
        simulated::World::Get();
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    return objects::Call(member, [&] {
        UINT32 length = 0;
        const char16_t* const name = WindowsGetStringRawBuffer(className, &length);
        return simulated::FindFactory(std::u16string_view(name, length), IActivationFactory::Iid,
                                      reinterpret_cast<void**>(factory));
    });
}

}  // namespace orv
