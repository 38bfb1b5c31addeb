#pragma once

#include "platform/abi/bluetooth.h"

namespace orv::bluez {

// The result is null if the daemon is not available or has no adapter.
HRESULT GetDefaultAdapterAsync(IAsyncOperation<BluetoothAdapter>** operation);

// The result contains the current state of each adapter.
HRESULT GetRadiosAsync(IAsyncOperation<IVectorView<Radio>>** operation);

}  // namespace orv::bluez
