// The adapter and the radios of the machine.
#pragma once

#include "runtimes/objects/stubs/bluetooth.h"
#include "runtimes/objects/stubs/radios.h"
#include "runtimes/simulated/world/operations.h"

namespace orv::simulated {

class SimulatedBluetoothAdapter final : public objects::Object<objects::Stub<IBluetoothAdapter>> {
  public:
    SimulatedBluetoothAdapter();

    // Implements BluetoothAdapter.GetDefaultAsync.
    static HRESULT GetDefaultAsync(IAsyncOperation<BluetoothAdapter>** operation);
};

// A radio with the state that it had when the library requested it.
class SimulatedRadio final : public objects::Object<objects::Stub<IRadio>> {
  public:
    SimulatedRadio(const RadioRecord& radio, std::size_t indexOfRadio);

    // Implements Radio.GetRadiosAsync.
    static HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation);

    // Switches the radio on or off, as a user does. `record` keeps the old state.
    HRESULT SetStateAsync(RadioState value,
                          IAsyncOperation<RadioAccessStatus>** operation) override;
    HRESULT get_State(RadioState* value) override;
    HRESULT get_Kind(RadioKind* value) override;

  private:
    const RadioRecord record;
    const std::size_t index;
};

}  // namespace orv::simulated
