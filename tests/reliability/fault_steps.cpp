#include "tests/reliability/fault_steps.h"

#include <algorithm>

namespace orv {
namespace {

std::string Number(BluetoothAddress number) {
    return std::to_string(number);
}

void Nothing() {}
void Link() {
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
}
void Unlink() {
    ASSERT_EQ(OrvDevice_Disconnect(Address), 0);
}
void Session() {
    ASSERT_EQ(OrvScanner_Initialize(), 0);
}
void EndSession() {
    ASSERT_EQ(OrvScanner_Deinitialize(0), 0);
}

constexpr std::uint8_t Block[] = {1, 2, 3};

// Starts a scan. Gives the device a scan response that fills value0500, value1130 and data1118 of
// its record.
void Scan() {
    Session();
    ASSERT_EQ(OrvScanner_Start(0), 0);
    OrvWorld_SetSignal(Address, -60);
    OrvWorld_ClearSections(Address, OrvPacket_ScanResponse);
    for (const Bytes& section :
         {Bytes{0x00, 0x05, 1}, Bytes{0x30, 0x11, 2}, Bytes{0x18, 0x11, 3}}) {
        OrvWorld_AddSection(Address, OrvPacket_ScanResponse, 0x16, section.data(), 3);
    }
}
void ScanAndList() {
    Scan();
    Advertise(Address);
    OrvWorld_SetSignal(Address, -50);
}

// Registrations of earlier rounds still exist.
std::int32_t Youngest(const char* registration) {
    return OrvWorld_CallCount(registration) - 1;
}

// Sends one advertising packet and returns how many fields of the device record it set.
template <std::int32_t Packet>
ResultCode Hear() {
    Advertise(Address, Packet, Youngest("BluetoothLEAdvertisementWatcher.add_Received"));
    Logging_Disable();
    DiscoveredDevice info = {};
    OrvScanner_GetDeviceInfo(0, 0, &info);
    return (info.address == Address) + (info.rssi == -50) + (info.value0500 == 1) +
           (info.value1130 == 2) + (info.data1118[0] == 3);
}
// Lets the device send a notification, receives it, and returns how many bytes are correct.
ResultCode TakeNotification() {
    Notify(Address, {1, 2, 3}, Youngest("GattCharacteristic.add_ValueChanged"));
    Logging_Disable();
    std::uint8_t bytes[4];
    const ResultCode count = std::min(OrvDevice_Receive(Address, 4, bytes), 3);
    return static_cast<ResultCode>(std::mismatch(bytes, bytes + count, Block).first - bytes);
}

}  // namespace

std::string State() {
    std::string state;
    for (std::int32_t id = 0; id < 3; ++id) {
        state += Number(static_cast<BluetoothAddress>(OrvScanner_GetDeviceCount(id) + 1)) + ",";
    }
    std::uint8_t bytes[64];
    const ResultCode queued = OrvDevice_Receive(Address, 0, bytes);
    return state + (queued < 0 ? "no link" : "link");
}

const std::vector<Step> Steps = {
    {"BluetoothAvailable", "BluetoothAvailable", Nothing, BluetoothAvailable, 0, Nothing},
    {"Initialize", "OrvScanner_Initialize", Nothing, OrvScanner_Initialize, 0, EndSession},
    {"Start", "OrvScanner_Start 0", Session, [] { return OrvScanner_Start(0); }, 0, EndSession},
    {"Stop", "OrvScanner_Stop 0", Session, [] { return OrvScanner_Stop(0); }, 0, EndSession},
    {"Deinitialize", "OrvScanner_Deinitialize 0", Session,
     [] { return OrvScanner_Deinitialize(0); }, 0, Nothing},
    {"Connect", "OrvDevice_Connect 176685338322165", Nothing,
     [] { return OrvDevice_Connect(Address); }, 0, Unlink},
    {"Disconnect", "OrvDevice_Disconnect 176685338322165", Link,
     [] { return OrvDevice_Disconnect(Address); }, 0, Nothing},
    {"Send", "OrvDevice_Send 176685338322165 3", Link,
     [] { return OrvDevice_Send(Address, 3, Block); }, 3, Unlink},
    {"NewDevice",
     "OnAdvertisementReceived 176685338322165 <ORV-0042> -60",
     Scan,
     Hear<0>,
     1,
     EndSession,
     4,
     {0, 0, 0, 0}},
    {"ListedDevice",
     "OnAdvertisementReceived 176685338322165 <ORV-0042> -50",
     ScanAndList,
     Hear<0>,
     2,
     EndSession,
     4,
     {1, 1, 1, 1, 2, 2}},
    {"ScanResponse",
     "OnAdvertisementReceived 176685338322165 <> -50",
     ScanAndList,
     Hear<1>,
     5,
     EndSession,
     4,
     {1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 4, 4, 4, 4, 4}},
    {"Notification",
     "OnDataReceived 176685338322165 3",
     Link,
     TakeNotification,
     3,
     Unlink,
     7,
     {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 2, 2, 3}},
};

}  // namespace orv
