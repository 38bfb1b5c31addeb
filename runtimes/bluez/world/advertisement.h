// The objects that describe a received advertisement to a handler.
#pragma once

#include "platform/abi/advertisement.h"
#include "runtimes/bluez/daemon/discovery.h"
#include "runtimes/bluez/world/objects.h"
#include "runtimes/objects/object.h"
#include "runtimes/objects/stubs/advertisement.h"

namespace orv::bluez {

class BluezBluetoothLEAdvertisementReceivedEventArgs final
    : public objects::Object<objects::Stub<IBluetoothLEAdvertisementReceivedEventArgs>,
                             objects::Stub<IBluetoothLEAdvertisementReceivedEventArgs2>> {
  public:
    explicit BluezBluetoothLEAdvertisementReceivedEventArgs(SharedReport reportReceived);

    HRESULT get_RawSignalStrengthInDBm(INT16* value) override;
    HRESULT get_BluetoothAddress(UINT64* value) override;
    HRESULT get_Advertisement(IBluetoothLEAdvertisement** value) override;
    HRESULT get_IsScanResponse(boolean* value) override;

  private:
    const SharedReport report;
};

}  // namespace orv::bluez
