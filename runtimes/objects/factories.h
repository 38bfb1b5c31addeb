// The factories of the six runtime classes that are activated by name, used by every runtime.
#pragma once

#include <string_view>

#include "platform/abi/advertisement.h"
#include "platform/abi/bluetooth.h"
#include "platform/abi/radios.h"

namespace orv::objects {

// The part of the factories that differs between runtimes. The factories hold no lock when they
// call these functions.
class Activations {
  public:
    virtual HRESULT GetDefaultAdapterAsync(IAsyncOperation<BluetoothAdapter>** operation) = 0;
    virtual HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation) = 0;
    virtual HRESULT FromBluetoothAddressAsync(UINT64 address,
                                              IAsyncOperation<BluetoothLEDevice>** operation) = 0;
    virtual HRESULT ActivateWatcher(IInspectable** instance) = 0;
    // Returns whether the factories may be used on any thread.
    virtual bool AreFactoriesAgile() const { return true; }

  protected:
    ~Activations() = default;
};

// The factories and `ofRuntime` live until the process ends. References to factories are not
// counted.
class Factories {
  public:
    explicit Factories(Activations& ofRuntime);

    // Returns the factory of the class, or REGDB_E_CLASSNOTREG for an unknown name. The caller
    // records the call, under the name of the function that the library called.
    HRESULT Find(std::u16string_view className, const GUID& iid, void** factory);

  private:
    struct All;

    All& all;
};

}  // namespace orv::objects
