#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "quelvixwinlib.h"
#include "quelvixwinlib_simulated.h"
#include "tests/reliability/model/comparison.h"

namespace orv::model {

using Bytes = std::vector<std::uint8_t>;

// The addresses of two devices, and an address without a device.
constexpr std::array<BluetoothAddress, 3> Addresses = {0xA0B1C2D3E4F5, 0xFFFFFFFFFFFF, 7};
constexpr std::size_t Machine = 2;  // the index of the adapter and the radios in `answers`

constexpr auto Unspecified = static_cast<std::int32_t>(0x80004005);
constexpr auto NoMemory = static_cast<std::int32_t>(0x8007000E);

// Platform functions that the command Break can make fail.
constexpr const char* StartWatcher = "BluetoothLEAdvertisementWatcher.Start";
constexpr const char* StopWatcher = "BluetoothLEAdvertisementWatcher.Stop";
constexpr const char* AddReceived = "BluetoothLEAdvertisementWatcher.add_Received";
constexpr const char* CloseService = "GattDeviceService.Close";
constexpr const char* CloseDevice = "BluetoothLEDevice.Close";
constexpr const char* GetName = "BluetoothLEAdvertisement.get_LocalName";
constexpr const char* GetData = "BluetoothLEAdvertisementDataSection.get_Data";
constexpr const char* GetValue = "GattValueChangedEventArgs.get_CharacteristicValue";
constexpr const char* ReadByte = "DataReader.ReadByte";
constexpr const char* Breakable[] = {StartWatcher, StopWatcher, AddReceived,
                                     CloseService, CloseDevice, GetName,
                                     GetData,      GetValue,    ReadByte};

inline std::int32_t Small(std::size_t number) {
    return static_cast<std::int32_t>(number);
}

struct Reference {
    struct Session {
        std::int32_t id;
        std::int32_t watcher;
        std::vector<DiscoveredDevice> devices;
    };
    struct Link {
        std::size_t device;
        std::int32_t registration;
        Bytes queue;
        bool isServiceOpen = true;
    };
    struct Watcher {
        bool hears;  // true if a handler is registered
        bool isStarted = false;
    };
    struct Packet {
        std::u16string name;
        std::vector<Bytes> sections;
    };
    struct Answer {
        std::int32_t manner = OrvAnswer_Standard;
        std::int32_t value = 0;
    };
    struct Device {
        std::array<Packet, 2> packets;
        std::int16_t signal = -60;
        std::int32_t registrations = 0;
        std::vector<Bytes> writes;
    };

    // Each function returns the expected result, and appends the expected failure lines to `lines`.
    ResultCode Available();
    ResultCode CreateSession();
    ResultCode StartOrStop(Session* session, bool starts);
    ResultCode OpenLink(std::size_t device);
    ResultCode CloseLink(std::size_t device);
    ResultCode SendBlock(std::size_t device, std::int32_t length, bool isNull, const Bytes& data);

    // Apply the expected effects of the library's callbacks.
    void Hear(std::int32_t watcher, std::size_t device, bool isScan);
    void TakeNotification(std::size_t device, std::int32_t registration, const Bytes& data);

    Session* FindSession(std::int32_t id);
    Link* FindLink(std::size_t device);

    std::vector<Session> sessions;
    std::vector<Watcher> watchers;  // every watcher that was created
    std::vector<Link> links;        // oldest first
    std::array<Device, 2> devices;
    std::map<std::pair<std::size_t, std::int32_t>, Answer> answers;
    std::map<std::string, std::int32_t> failing;
    bool hasAdapter = true;
    std::int32_t radioKind = OrvRadioKind_Bluetooth;
    std::int32_t radioState = OrvRadioState_On;
    bool isLogOn = false;

    // Expected duration (ms) and log lines of the current command.
    std::int64_t now = 0;
    Lines lines;

  private:
    // The effect of a platform call on the library call that makes it.
    enum class Outcome { Good, Refused, Raised };

    // If the platform function is set to fail, appends its failure line and returns true.
    bool Fails(const char* member);
    Outcome Await(std::size_t device, std::int32_t operation, bool isResultRead);
    void HearFor(Session& session, std::size_t device, bool isScan, const std::string& name);
};

}  // namespace orv::model
