// The adapter and the radios of the machine.
#pragma once

#include "runtimes/objects/stubs/bluetooth.h"
#include "runtimes/objects/stubs/radios.h"
#include "runtimes/simulated/world.h"

namespace orv::simulated {

class SimulatedBluetoothAdapter final : public objects::Object<objects::Stub<IBluetoothAdapter>> {
  public:
    SimulatedBluetoothAdapter();

    // The work of BluetoothAdapter.GetDefaultAsync.
    static HRESULT GetDefaultAsync(IAsyncOperation<BluetoothAdapter>** operation);
};

// As the radio was when it was asked for.
class SimulatedRadio final : public objects::Object<objects::Stub<IRadio>> {
  public:
    explicit SimulatedRadio(const RadioRecord& radio);

    // The work of Radio.GetRadiosAsync.
    static HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation);

    HRESULT get_State(RadioState* value) override;
    HRESULT get_Kind(RadioKind* value) override;

  private:
    const RadioRecord record;
};

}  // namespace orv::simulated
