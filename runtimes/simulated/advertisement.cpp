// What a watcher hears.
#include "runtimes/simulated/advertisement.h"

#include "runtimes/objects/buffer.h"
#include "runtimes/objects/vector.h"

namespace orv::simulated {

using objects::Call;
using objects::Make;
using objects::Member;
using objects::Property;

namespace {

objects::Class argsClass("BluetoothLEAdvertisementReceivedEventArgs");
objects::Class advertisementClass("BluetoothLEAdvertisement");
objects::Class sectionClass("BluetoothLEAdvertisementDataSection");

// Looks like chance and repeats exactly.
INT16 SignalOf(const DeviceRecord& device) {
    const INT32 width = 2 * device.signalSpread + 1;
    const UINT32 chance = (device.packetsSent * 2654435761U) >> 16;
    const INT32 offset = static_cast<INT32>(chance % static_cast<UINT32>(width));
    return static_cast<INT16>(device.signal + offset - device.signalSpread);
}

}  // namespace

Packet::Packet(const DeviceRecord& device, bool asScanResponse)
    : address(device.address),
      signal(SignalOf(device)),
      isScanResponse(asScanResponse),
      content(device.packets[asScanResponse ? 1 : 0]) {}

// ------------------------------------------------------------------------------- the arguments

SimulatedBluetoothLEAdvertisementReceivedEventArgs::
    SimulatedBluetoothLEAdvertisementReceivedEventArgs(SharedPacket packetReceived)
    : Object(argsClass), packet(std::move(packetReceived)) {}

HRESULT SimulatedBluetoothLEAdvertisementReceivedEventArgs::get_RawSignalStrengthInDBm(
    INT16* value) {
    static Member member(argsClass.name, "get_RawSignalStrengthInDBm");
    return Property(member, value, packet->signal);
}

HRESULT SimulatedBluetoothLEAdvertisementReceivedEventArgs::get_BluetoothAddress(UINT64* value) {
    static Member member(argsClass.name, "get_BluetoothAddress");
    return Property(member, value, packet->address);
}

HRESULT SimulatedBluetoothLEAdvertisementReceivedEventArgs::get_Advertisement(
    IBluetoothLEAdvertisement** value) {
    static Member member(argsClass.name, "get_Advertisement");
    return Call(member,
                [&] { return Give(value, Make<SimulatedBluetoothLEAdvertisement>(packet)); });
}

HRESULT SimulatedBluetoothLEAdvertisementReceivedEventArgs::get_IsScanResponse(boolean* value) {
    static Member member(argsClass.name, "get_IsScanResponse");
    return Property(member, value, static_cast<boolean>(packet->isScanResponse));
}

// --------------------------------------------------------------------------- the advertisement

SimulatedBluetoothLEAdvertisement::SimulatedBluetoothLEAdvertisement(SharedPacket packetReceived)
    : Object(advertisementClass), packet(std::move(packetReceived)) {}

HRESULT SimulatedBluetoothLEAdvertisement::get_LocalName(HSTRING* value) {
    static Member member(advertisementClass.name, "get_LocalName");
    return Call(member, [&] {
        const auto& name = packet->content.name;
        return WindowsCreateString(name ? name->data() : nullptr,
                                   name ? static_cast<UINT32>(name->size()) : 0, value);
    });
}

HRESULT SimulatedBluetoothLEAdvertisement::get_DataSections(
    IVector<BluetoothLEAdvertisementDataSection>** value) {
    static Member member(advertisementClass.name, "get_DataSections");
    using Item = SimulatedBluetoothLEAdvertisementDataSection;
    return Call(member, [&] {
        std::vector<objects::Ref<Item>> sections;
        for (const Section& section : packet->content.sections) {
            sections.push_back(Make<Item>(packet, section));
        }
        using Sections = objects::Vector<BluetoothLEAdvertisementDataSection, Item>;
        return Give(value, Make<Sections>(std::move(sections)));
    });
}

SimulatedBluetoothLEAdvertisementDataSection::SimulatedBluetoothLEAdvertisementDataSection(
    SharedPacket packetReceived, const Section& sectionOfPacket)
    : Object(sectionClass), packet(std::move(packetReceived)), section(sectionOfPacket) {}

HRESULT SimulatedBluetoothLEAdvertisementDataSection::get_Data(IBuffer** value) {
    static Member member(sectionClass.name, "get_Data");
    return Call(member, [&] { return Give(value, Make<objects::MemoryBuffer>(section.data)); });
}

}  // namespace orv::simulated
