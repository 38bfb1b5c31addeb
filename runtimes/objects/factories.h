// The factories of the six runtime classes that are activated by name. All runtimes use them.
#pragma once

#include <string_view>

#include "platform/abi/advertisement.h"
#include "platform/abi/bluetooth.h"
#include "platform/abi/radios.h"

namespace orv::objects {

// Factory functions that differ between runtimes. They are called without a lock.
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

// The factories live until the process ends. References to factories are not counted.
class Factories {
  public:
    explicit Factories(const Activations& ofRuntime);

    // Returns the factory of the class, or REGDB_E_CLASSNOTREG for an unknown name. The caller
    // records the call, under the name of the function that the library called.
    HRESULT Find(std::u16string_view className, const GUID& iid, void** factory);

  private:
    struct All;

    All& all;
};

}  // namespace orv::objects
