#pragma once

#include "runtimes/objects/radio.h"
#include "runtimes/simulated/world/operations.h"

namespace orv::simulated {

HRESULT GetDefaultAdapterAsync(IAsyncOperation<BluetoothAdapter>** operation);

HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation);

class SimulatedRadio final : public objects::RadioObject {
  public:
    SimulatedRadio(const RadioRecord& record, std::size_t indexOfRadio);

    // Switches the radio on or off, as a user does. This object keeps the old state.
    HRESULT SetStateAsync(RadioState value,
                          IAsyncOperation<RadioAccessStatus>** operation) override;

  private:
    const std::size_t index;
};

}  // namespace orv::simulated
