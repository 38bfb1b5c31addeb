// Objects through which a watcher's handler reads a received packet.
#include "runtimes/simulated/world/advertisement.h"

#include "runtimes/objects/buffer.h"
#include "runtimes/objects/vector.h"

namespace orv::simulated {

using objects::Call;
using objects::Make;
using objects::Member;
using objects::Property;

namespace {

objects::Class argsClass("BluetoothLEAdvertisementReceivedEventArgs");
Member getRawSignalStrengthInDBmMember(argsClass.name, "get_RawSignalStrengthInDBm");
Member getBluetoothAddressMember(argsClass.name, "get_BluetoothAddress");
Member getAdvertisementMember(argsClass.name, "get_Advertisement");
Member getIsScanResponseMember(argsClass.name, "get_IsScanResponse");
objects::Class advertisementClass("BluetoothLEAdvertisement");
Member getLocalNameMember(advertisementClass.name, "get_LocalName");
Member getDataSectionsMember(advertisementClass.name, "get_DataSections");
objects::Class sectionClass("BluetoothLEAdvertisementDataSection");
Member getDataMember(sectionClass.name, "get_Data");

}  // namespace

SimulatedBluetoothLEAdvertisementReceivedEventArgs::
    SimulatedBluetoothLEAdvertisementReceivedEventArgs(SharedPacket packetReceived)
    : Object(argsClass), packet(std::move(packetReceived)) {}

HRESULT SimulatedBluetoothLEAdvertisementReceivedEventArgs::get_RawSignalStrengthInDBm(
    INT16* value) {
    return Property(getRawSignalStrengthInDBmMember, value, packet->signal);
}

HRESULT SimulatedBluetoothLEAdvertisementReceivedEventArgs::get_BluetoothAddress(UINT64* value) {
    return Property(getBluetoothAddressMember, value, packet->address);
}

HRESULT SimulatedBluetoothLEAdvertisementReceivedEventArgs::get_Advertisement(
    IBluetoothLEAdvertisement** value) {
    return Call(getAdvertisementMember,
                [&] { return Give(value, Make<SimulatedBluetoothLEAdvertisement>(packet)); });
}

HRESULT SimulatedBluetoothLEAdvertisementReceivedEventArgs::get_IsScanResponse(boolean* value) {
    return Property(getIsScanResponseMember, value, static_cast<boolean>(packet->isScanResponse));
}

SimulatedBluetoothLEAdvertisement::SimulatedBluetoothLEAdvertisement(SharedPacket packetReceived)
    : Object(advertisementClass), packet(std::move(packetReceived)) {}

HRESULT SimulatedBluetoothLEAdvertisement::get_LocalName(HSTRING* value) {
    return Call(getLocalNameMember, [&] {
        const auto& name = packet->content.name;
        return WindowsCreateString(name ? name->data() : nullptr,
                                   name ? static_cast<UINT32>(name->size()) : 0, value);
    });
}

HRESULT SimulatedBluetoothLEAdvertisement::get_DataSections(
    IVector<BluetoothLEAdvertisementDataSection>** value) {
    using Item = SimulatedBluetoothLEAdvertisementDataSection;
    return Call(getDataSectionsMember, [&] {
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
    return Call(getDataMember,
                [&] { return Give(value, Make<objects::MemoryBuffer>(section.data)); });
}

}  // namespace orv::simulated
