#include "runtimes/objects/advertisement.h"

#include "runtimes/objects/buffer.h"
#include "runtimes/objects/vector.h"

namespace orv::objects {

namespace {

Class argsClass("BluetoothLEAdvertisementReceivedEventArgs");
Member getRawSignalStrengthInDBmMember(argsClass.name, "get_RawSignalStrengthInDBm");
Member getBluetoothAddressMember(argsClass.name, "get_BluetoothAddress");
Member getAdvertisementMember(argsClass.name, "get_Advertisement");
Member getIsScanResponseMember(argsClass.name, "get_IsScanResponse");
Class advertisementClass("BluetoothLEAdvertisement");
Member getLocalNameMember(advertisementClass.name, "get_LocalName");
Member getDataSectionsMember(advertisementClass.name, "get_DataSections");
Class sectionClass("BluetoothLEAdvertisementDataSection");
Member getDataMember(sectionClass.name, "get_Data");

class DataSection final : public Object<Stub<IBluetoothLEAdvertisementDataSection>> {
  public:
    DataSection(SharedPacket packetReceived, const std::vector<BYTE>& dataOfSection)
        : Object(sectionClass), packet(std::move(packetReceived)), data(dataOfSection) {}

    HRESULT get_Data(IBuffer** value) override {
        return Call(getDataMember, [&] { return Give(value, Make<MemoryBuffer>(data)); });
    }

  private:
    const SharedPacket packet;  // owns `data`
    const std::vector<BYTE>& data;
};

class Advertisement final : public Object<Stub<IBluetoothLEAdvertisement>> {
  public:
    explicit Advertisement(SharedPacket packetReceived)
        : Object(advertisementClass), packet(std::move(packetReceived)) {}

    HRESULT get_LocalName(HSTRING* value) override {
        return Call(getLocalNameMember, [&] {
            const auto& name = packet->content.name;
            return WindowsCreateString(name ? name->data() : nullptr,
                                       name ? static_cast<UINT32>(name->size()) : 0, value);
        });
    }
    HRESULT get_DataSections(IVector<BluetoothLEAdvertisementDataSection>** value) override {
        return Call(getDataSectionsMember, [&] {
            std::vector<Ref<DataSection>> sections;
            sections.reserve(packet->content.sections.size());
            for (const auto& data : packet->content.sections) {
                sections.push_back(Make<DataSection>(packet, data));
            }
            using Sections = Vector<BluetoothLEAdvertisementDataSection, DataSection>;
            return Give(value, Make<Sections>(std::move(sections)));
        });
    }

  private:
    const SharedPacket packet;
};

class PacketArgs final : public ReceivedArgs {
  public:
    explicit PacketArgs(SharedPacket packetReceived)
        : Object(argsClass), packet(std::move(packetReceived)) {}

    HRESULT get_RawSignalStrengthInDBm(INT16* value) override {
        return Property(getRawSignalStrengthInDBmMember, value, packet->signal);
    }
    HRESULT get_BluetoothAddress(UINT64* value) override {
        return Property(getBluetoothAddressMember, value, packet->address);
    }
    HRESULT get_Advertisement(IBluetoothLEAdvertisement** value) override {
        return Call(getAdvertisementMember,
                    [&] { return Give(value, Make<Advertisement>(packet)); });
    }
    HRESULT get_IsScanResponse(boolean* value) override {
        return Property(getIsScanResponseMember, value,
                        static_cast<boolean>(packet->isScanResponse));
    }

  private:
    const SharedPacket packet;
};

}  // namespace

Ref<ReceivedArgs> MakeReceivedArgs(SharedPacket packet) {
    return Ref<ReceivedArgs>(new PacketArgs(std::move(packet)));
}

}  // namespace orv::objects
