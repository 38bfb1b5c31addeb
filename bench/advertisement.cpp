// Measures the cost of handling an advertisement, for lists of several lengths.
#include <algorithm>
#include <cstring>

#include "bench/support/addresses.h"
#include "bench/support/arrangement.h"
#include "bench/support/measure.h"
#include "scanner/advertisement_handler.h"

namespace orv::bench {

namespace {

using Arguments = IBluetoothLEAdvertisementReceivedEventArgs;
using NewerArguments = IBluetoothLEAdvertisementReceivedEventArgs2;

// A device name converted from UTF-16. All names in this benchmark are ASCII.
struct Narrowed {
    char text[32];
    std::size_t length;
};

Narrowed ReadName(Arguments* arguments) {
    Narrowed name;
    IBluetoothLEAdvertisement* advertisement = nullptr;
    arguments->get_Advertisement(&advertisement);
    HSTRING string = nullptr;
    advertisement->get_LocalName(&string);
    UINT32 length = 0;
    const char16_t* units = WindowsGetStringRawBuffer(string, &length);
    name.length = std::min<std::size_t>(length, 29);
    for (std::size_t i = 0; i < name.length; ++i) {
        name.text[i] = static_cast<char>(units[i]);
    }
    WindowsDeleteString(string);
    advertisement->Release();
    return name;
}

bool AskScanResponse(Arguments* arguments) {
    void* found = nullptr;
    arguments->QueryInterface(&NewerArguments::Iid, &found);
    auto* const newer = static_cast<NewerArguments*>(found);
    boolean isScanResponse = 0;
    newer->get_IsScanResponse(&isScanResponse);
    newer->Release();
    return isScanResponse != 0;
}

void Name(DiscoveredDevice& device, const Narrowed& name) {
    std::memset(device.name, 0, sizeof device.name);
    std::memcpy(device.name, name.text, name.length);
}

[[gnu::noinline]] void HearByHand(IBluetoothLEAdvertisementWatcher* sender, Arguments* arguments) {
    UINT64 address = 0;
    arguments->get_BluetoothAddress(&address);
    const Narrowed name = ReadName(arguments);
    INT16 rssi = 0;
    arguments->get_RawSignalStrengthInDBm(&rssi);
    const std::lock_guard<std::mutex> lock(floorMutex);
    FloorSession& session = floorSessions.front();
    if (session.watcher != sender) {
        return;
    }
    FloorList& devices = session.devices;
    const auto found = devices.places.find(address);
    if (found != devices.places.end()) {
        DiscoveredDevice& device = devices.records[found->second];
        device.rssi = rssi;
        if (!AskScanResponse(arguments)) {
            Name(device, name);
        }
    } else if (name.length >= 3 && std::memcmp(name.text, "ORV", 3) == 0) {
        DiscoveredDevice device{};
        device.address = address;
        device.rssi = rssi;
        device.value0500 = device.value1130 = 0xFF;
        Name(device, name);
        devices.places.emplace(address, devices.records.size());
        devices.records.push_back(device);
    }
}

[[gnu::noinline]] void RuntimeOnly(Arguments* arguments, bool listed) {
    UINT64 address = 0;
    arguments->get_BluetoothAddress(&address);
    Narrowed name = ReadName(arguments);
    benchmark::DoNotOptimize(name);
    INT16 rssi = 0;
    arguments->get_RawSignalStrengthInDBm(&rssi);
    if (listed) {
        AskScanResponse(arguments);
    }
}

// Prepares both device lists. Returns the length of the hand-written host's list if `floor` is set,
// otherwise of the library's.
std::size_t Arrange(std::size_t listed, bool floor) {
    ArrangeListed(listed);
    return floor ? floorSessions.front().devices.records.size()
                 : static_cast<std::size_t>(OrvScanner_GetDeviceCount(0));
}

void Hear(AddressKind kind, std::size_t listed) {
    const std::string row =
        "advertisement, " + std::string(NameOf(kind)) + ", " + std::to_string(listed) + " listed";
    auto* const heard = new Heard(0, LocalNameOf(kind));
    auto* const addresses = new Addresses(kind, listed);
    const auto arranged = [=](bool floor) { addresses->Restart(Arrange(listed, floor)); };
    const int batch = listed > 1000 ? 1000 : 200;
    const auto event = Reference<Arguments>(static_cast<Arguments*>(heard));
    Measure(
        row, Ours, batch, [=] { arranged(false); },
        [=] {
            heard->address = addresses->Next();
            OnAdvertisementReceived(watcher, event);
        });
    Measure(
        row, Floor, batch, [=] { arranged(true); },
        [=] {
            heard->address = addresses->Next();
            HearByHand(floorSessions.front().watcher, heard);
        });
    Measure(
        row, RuntimeAlone, batch, [] {},
        [=] {
            heard->address = addresses->Next();
            RuntimeOnly(heard, kind == AddressKind::Listed);
        });
}

const Registered advertisements([] {
    for (const std::size_t listed : {10u, 1000u, 100000u, 1000000u}) {
        for (const AddressKind kind :
             {AddressKind::Listed, AddressKind::New, AddressKind::OtherFamily}) {
            Hear(kind, listed);
        }
    }
});

}  // namespace

}  // namespace orv::bench
