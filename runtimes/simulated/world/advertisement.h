// Objects through which a watcher's handler reads a received packet.
#pragma once

#include "runtimes/objects/stubs/advertisement.h"
#include "runtimes/simulated/world/records.h"

namespace orv::simulated {

class SimulatedBluetoothLEAdvertisementReceivedEventArgs final
    : public objects::Object<objects::Stub<IBluetoothLEAdvertisementReceivedEventArgs>,
                             objects::Stub<IBluetoothLEAdvertisementReceivedEventArgs2>> {
  public:
    explicit SimulatedBluetoothLEAdvertisementReceivedEventArgs(SharedPacket packetReceived);

    HRESULT get_RawSignalStrengthInDBm(INT16* value) override;
    HRESULT get_BluetoothAddress(UINT64* value) override;
    HRESULT get_Advertisement(IBluetoothLEAdvertisement** value) override;
    HRESULT get_IsScanResponse(boolean* value) override;

  private:
    const SharedPacket packet;
};

class SimulatedBluetoothLEAdvertisement final
    : public objects::Object<objects::Stub<IBluetoothLEAdvertisement>> {
  public:
    explicit SimulatedBluetoothLEAdvertisement(SharedPacket packetReceived);

    HRESULT get_LocalName(HSTRING* value) override;
    HRESULT get_DataSections(IVector<BluetoothLEAdvertisementDataSection>** value) override;

  private:
    const SharedPacket packet;
};

class SimulatedBluetoothLEAdvertisementDataSection final
    : public objects::Object<objects::Stub<IBluetoothLEAdvertisementDataSection>> {
  public:
    SimulatedBluetoothLEAdvertisementDataSection(SharedPacket packetReceived,
                                                 const Section& sectionOfPacket);

    HRESULT get_Data(IBuffer** value) override;

  private:
    const SharedPacket packet;  // owns `section`
    const Section& section;
};

}  // namespace orv::simulated
