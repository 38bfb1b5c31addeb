// What a watcher hears: packets, and the objects that show one to a handler.
#pragma once

#include "runtimes/objects/stubs/advertisement.h"
#include "runtimes/simulated/world.h"

namespace orv::simulated {

// A packet as it was when it was sent. Shared by all watchers that hear it.
struct Packet {
    // The device's own, as it is configured now.
    Packet(const DeviceRecord& device, bool asScanResponse);

    UINT64 address;
    INT16 signal;
    bool isScanResponse;
    PacketRecord content;
};
using SharedPacket = std::shared_ptr<const Packet>;

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
    const SharedPacket packet;  // keeps the section
    const Section& section;
};

}  // namespace orv::simulated
