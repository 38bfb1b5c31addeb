// What does one advertisement cost, and how does it grow with the list?
#include "scanner/advertisement.h"

#include <algorithm>
#include <cstring>

#include "bench/support/arrangement.h"
#include "bench/support/measure.h"

namespace orv::bench {

namespace {

using Arguments = IBluetoothLEAdvertisementReceivedEventArgs;
using NewerArguments = IBluetoothLEAdvertisementReceivedEventArgs2;

// Names here are ASCII, so a host by hand would narrow them.
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
    const auto found = std::find(session.addresses.begin(), session.addresses.end(), address);
    if (found != session.addresses.end()) {
        DiscoveredDevice& device =
            session.records[static_cast<std::size_t>(found - session.addresses.begin())];
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
        session.addresses.push_back(address);
        session.records.push_back(device);
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

// `step`: by how much the address moves from one advertisement to the next.
void Hear(const char* kind, std::size_t listed, UINT64 address, const char16_t* name, UINT64 step) {
    const std::string row =
        "advertisement, " + std::string(kind) + ", " + std::to_string(listed) + " listed";
    auto* const heard = new Heard(address, name);
    const auto arranged = [=] {
        ArrangeListed(listed);
        heard->address = address;
    };
    const int batch = listed > 1000 ? 32 : 200;
    const auto event = Reference<Arguments>(static_cast<Arguments*>(heard));
    Measure(row, Ours, batch, arranged, [=] {
        OnAdvertisementReceived(watcher, event);
        heard->address += step;
    });
    Measure(row, Floor, batch, arranged, [=] {
        HearByHand(floorSessions.front().watcher, heard);
        heard->address += step;
    });
    Measure(row, RuntimeAlone, batch, arranged,
            [=] { RuntimeOnly(heard, step == 0 && *name == u'O'); });
}

const Registered advertisements([] {
    for (const std::size_t listed : {10u, 1000u, 10000u, 100000u}) {
        Hear("listed", listed, ListedAddress + listed - 1, u"ORV-0042", 0);
        Hear("new", listed, ListedAddress + listed, u"ORV-0043", 1);
        Hear("foreign", listed, 0x112233445566, u"Lamp", 0);
    }
});

}  // namespace

}  // namespace orv::bench
