#include "scanner/advertisement_handler.h"

#include <algorithm>
#include <cstring>

#include "frame/export_frame.h"
#include "platform/call.h"
#include "scanner/scanner_session.h"

namespace orv {

namespace {

constexpr std::string_view FamilyPrefix = "ORV";

struct Heard {
    BluetoothAddress address;
    std::int16_t rssi;
    std::string_view name;  // UTF-8; empty if the packet has no name
};

void TraceAdvertisement(const Heard& heard) {
    if (!diagnosticsLog.IsEnabled()) {
        return;
    }
    TextBuffer line;
    line.Append("OnAdvertisementReceived ");
    line.AppendNumber(heard.address);
    line.Append(" <");
    line.Append(heard.name);
    line.Append("> ");
    line.AppendNumber(heard.rssi);
    AppendLogLine(line.View());
}

// Returns whether the packet is a scan response. Old systems lack the interface that reports this.
// There, every packet counts as an advertisement, so that names are updated.
bool IsScanResponse(const Reference<IBluetoothLEAdvertisementReceivedEventArgs>& arguments) {
    Reference<IBluetoothLEAdvertisementReceivedEventArgs2> newer;
    const HRESULT code = arguments.Query(newer);
    if (code == E_NOINTERFACE) {
        return false;
    }
    CheckResult(code);
    return Get(newer, &IBluetoothLEAdvertisementReceivedEventArgs2::get_IsScanResponse) != 0;
}

// Copies the value of a data section to the device. `payload` is the 16-bit key of the section in
// little-endian order, then at least one byte of the value.
void ReadSection(DiscoveredDevice& device, const BYTE* payload, UINT32 length) {
    const int key = payload[0] | payload[1] << 8;
    switch (key) {
        case 0x0500:
            device.value0500 = payload[2];
            break;
        case 0x1130:
            device.value1130 = payload[2];
            break;
        case 0x1118:
            std::memset(device.data1118, 0, sizeof device.data1118);
            std::memcpy(device.data1118, payload + 2,
                        std::min<std::size_t>(length - 2, sizeof device.data1118));
            break;
        default:
            break;
    }
}

void ReadScanResponse(DiscoveredDevice& device,
                      const Reference<IBluetoothLEAdvertisement>& advertisement) {
    using Sections = IVector<BluetoothLEAdvertisementDataSection>;
    const auto sections = Get(advertisement, &IBluetoothLEAdvertisement::get_DataSections);
    const UINT32 size = Get(sections, &Sections::get_Size);
    for (UINT32 i = 0; i < size; ++i) {
        const auto section = Get(sections, &Sections::GetAt, i);
        const auto data = Get(section, &IBluetoothLEAdvertisementDataSection::get_Data);
        const UINT32 length = data ? Get(data, &IBuffer::get_Length) : 0;
        if (length <= 2) {
            continue;
        }
        const BYTE* payload = Get(data.As<IBufferByteAccess>(), &IBufferByteAccess::Buffer);
        if (!payload) {
            RaiseFailure(E_POINTER);
        }
        ReadSection(device, payload, length);
    }
}

// Updates a listed device: the signal strength from every packet, the name from an advertisement,
// the other values from a scan response.
void Update(DiscoveredDevice& device, const Heard& heard,
            const Reference<IBluetoothLEAdvertisementReceivedEventArgs>& arguments,
            const Reference<IBluetoothLEAdvertisement>& advertisement) {
    device.rssi = heard.rssi;
    if (IsScanResponse(arguments)) {
        ReadScanResponse(device, advertisement);
    } else {
        SetName(device, heard.name);
    }
}

}  // namespace

void OnAdvertisementReceived(
    const Reference<IBluetoothLEAdvertisementWatcher>& sender,
    const Reference<IBluetoothLEAdvertisementReceivedEventArgs>& arguments) noexcept {
    LogFailuresOf([&] {
        using Arguments = IBluetoothLEAdvertisementReceivedEventArgs;
        Heard heard{};
        heard.address = Get(arguments, &Arguments::get_BluetoothAddress);
        const auto advertisement = Get(arguments, &Arguments::get_Advertisement);
        TextBuffer name;
        Get(advertisement, &IBluetoothLEAdvertisement::get_LocalName).AppendUtf8To(name);
        heard.name = name.View();
        heard.rssi = Get(arguments, &Arguments::get_RawSignalStrengthInDBm);
        TraceAdvertisement(heard);

        const Lock lock(scannerMutex);
        ScannerSession* session =
            FindSameObject(scannerSessions.sessions, &ScannerSession::watcher, sender);
        if (!session) {
            return;
        }
        if (DiscoveredDevice* listed = session->devices.Find(heard.address)) {
            Update(*listed, heard, arguments, advertisement);
        } else if (heard.name.substr(0, FamilyPrefix.size()) == FamilyPrefix) {
            // A packet that adds a device sets only name and signal strength, even if it is a scan
            // response.
            session->devices.Append(NewRecord(heard.address, heard.name, heard.rssi));
        }
    });
}

}  // namespace orv
