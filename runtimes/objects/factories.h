// The factories of the Windows Runtime classes that the library uses, shared by all runtimes.
#pragma once

#include <string_view>

#include "platform/abi/advertisement.h"
#include "platform/abi/bluetooth.h"
#include "platform/abi/radios.h"

namespace orv::objects {

// Functions that each runtime supplies to the class factories. The factories hold no lock when they
// call these functions.
struct Activations {
    template <typename... Arguments>
    using Function = HRESULT (*)(Arguments...);

    Function<IAsyncOperation<BluetoothAdapter>**> getDefaultAdapterAsync;
    Function<IAsyncOperation<IVectorView<Radio>>**> getRadiosAsync;
    Function<UINT64, IAsyncOperation<BluetoothLEDevice>**> fromBluetoothAddressAsync;
    Function<IInspectable**> activateWatcher;
    // Returns whether the factories may be used on any thread.
    bool (*areFactoriesAgile)() = [] { return true; };
};

// The class factories, which live until the process ends. References to them are not counted.
class Factories {
  public:
    explicit Factories(const Activations& ofRuntime);

    // Returns the factory of the class, or REGDB_E_CLASSNOTREG for an unknown name. The caller must
    // record the call, because only the caller knows which function the library called.
    HRESULT Find(std::u16string_view className, const GUID& iid, void** factory);

  private:
    struct All;

    All& all;
};

}  // namespace orv::objects
