#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "log_file.h"
#include "quelvixwinlib.h"
#include "quelvixwinlib_simulated.h"

namespace orv {

using Bytes = std::vector<std::uint8_t>;

constexpr BluetoothAddress Address = 0xA0B1C2D3E4F5;       // 176685338322165 in logs
constexpr BluetoothAddress OtherAddress = 0x112233445566;  // 18838586676582 in logs

constexpr std::int32_t Fails = static_cast<std::int32_t>(0x80004005);
constexpr std::int32_t NoInterface = static_cast<std::int32_t>(0x80004002);
constexpr std::int32_t NoMemory = static_cast<std::int32_t>(0x8007000E);

constexpr const char* CloseService = "GattDeviceService.Close";
constexpr const char* CloseDevice = "BluetoothLEDevice.Close";
constexpr const char* WriteDescriptor =
    "GattCharacteristic.WriteClientCharacteristicConfigurationDescriptorAsync";

// TearDown removes the devices and faults that these functions add.
void AddDevice(BluetoothAddress address, const char* name);
void FailMember(const std::string& member, std::int32_t code = Fails);

// Send one packet or notification and wait until the library has handled it.
void Advertise(BluetoothAddress address, std::int32_t packet = OrvPacket_Advertisement,
               std::int32_t watcher = -1);
void Notify(BluetoothAddress address, const Bytes& data, std::int32_t registration = -1);

Bytes Sequence(std::size_t count, std::size_t first = 0);

// Returns the library's platform calls from index `from` on, except QueryInterface.
Lines Calls(std::int32_t from = 0);

template <typename Call>
void ExpectCall(Call&& call, ResultCode result, const Lines& lines) {
    EXPECT_EQ(LinesOf([&] { EXPECT_EQ(call(), result); }), lines);
}

// Waits until the log contains `text`. Returns false after 10 s.
bool AwaitLog(const std::string& text);

// Sets up an adapter, a radio that is on, a device, and an empty log. At the end, checks that
// the library released everything and made no unexpected platform call.
class WorldTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;
};

constexpr auto RowName = [](const auto& row) { return std::string(row.param.name); };

}  // namespace orv
