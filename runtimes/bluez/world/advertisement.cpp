#include "runtimes/bluez/world/advertisement.h"

#include "runtimes/bluez/world/utf16.h"
#include "runtimes/objects/buffer.h"
#include "runtimes/objects/vector.h"

namespace orv::bluez {

namespace {

objects::Class argsClass("BluetoothLEAdvertisementReceivedEventArgs");
objects::Class advertisementClass("BluetoothLEAdvertisement");
objects::Class sectionClass("BluetoothLEAdvertisementDataSection");

class BluezSection final
    : public objects::Object<objects::Stub<IBluetoothLEAdvertisementDataSection>> {
  public:
    explicit BluezSection(const Bytes& data)
        : Object(sectionClass), buffer(Make<objects::MemoryBuffer>(data)) {}

    HRESULT get_Data(IBuffer** value) override {
        static Member member(sectionClass.name, "get_Data");
        return Call(member, [&] { return Give(value, buffer); });
    }

  private:
    const Ref<objects::MemoryBuffer> buffer;
};

class BluezAdvertisement final : public objects::Object<objects::Stub<IBluetoothLEAdvertisement>> {
  public:
    explicit BluezAdvertisement(SharedReport reportReceived)
        : Object(advertisementClass), report(std::move(reportReceived)) {}

    HRESULT get_LocalName(HSTRING* value) override {
        static Member member(advertisementClass.name, "get_LocalName");
        return Call(member, [&] {
            const std::u16string name = Utf16(report->name);
            return WindowsCreateString(name.data(), static_cast<UINT32>(name.size()), value);
        });
    }
    HRESULT get_DataSections(IVector<BluetoothLEAdvertisementDataSection>** value) override {
        static Member member(advertisementClass.name, "get_DataSections");
        return Call(member, [&] {
            std::vector<Ref<BluezSection>> sections;
            for (const Bytes& payload : report->sections) {
                sections.push_back(Make<BluezSection>(payload));
            }
            using Sections = objects::Vector<BluetoothLEAdvertisementDataSection, BluezSection>;
            return Give(value, Make<Sections>(std::move(sections)));
        });
    }

  private:
    const SharedReport report;
};

}  // namespace

BluezBluetoothLEAdvertisementReceivedEventArgs::BluezBluetoothLEAdvertisementReceivedEventArgs(
    SharedReport reportReceived)
    : Object(argsClass), report(std::move(reportReceived)) {}

HRESULT BluezBluetoothLEAdvertisementReceivedEventArgs::get_RawSignalStrengthInDBm(INT16* value) {
    static Member member(argsClass.name, "get_RawSignalStrengthInDBm");
    return Property(member, value, report->signal);
}

HRESULT BluezBluetoothLEAdvertisementReceivedEventArgs::get_BluetoothAddress(UINT64* value) {
    static Member member(argsClass.name, "get_BluetoothAddress");
    return Property(member, value, report->address);
}

HRESULT BluezBluetoothLEAdvertisementReceivedEventArgs::get_Advertisement(
    IBluetoothLEAdvertisement** value) {
    static Member member(argsClass.name, "get_Advertisement");
    return Call(member, [&] { return Give(value, Make<BluezAdvertisement>(report)); });
}

HRESULT BluezBluetoothLEAdvertisementReceivedEventArgs::get_IsScanResponse(boolean* value) {
    static Member member(argsClass.name, "get_IsScanResponse");
    return Property(member, value, static_cast<boolean>(report->isScanResponse));
}

}  // namespace orv::bluez
