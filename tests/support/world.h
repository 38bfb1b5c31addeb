// The simulated world as the tests arrange and question it, and the fixture that every test through
// the exports shares.
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

constexpr BluetoothAddress Address = 0xA0B1C2D3E4F5;       // in logs 176685338322165
constexpr BluetoothAddress OtherAddress = 0x112233445566;  // in logs 18838586676582

constexpr std::int32_t Fails = static_cast<std::int32_t>(0x80004005);
constexpr std::int32_t NoInterface = static_cast<std::int32_t>(0x80004002);
constexpr std::int32_t NoMemory = static_cast<std::int32_t>(0x8007000E);

constexpr const char* CloseService = "GattDeviceService.Close";
constexpr const char* CloseDevice = "BluetoothLEDevice.Close";
constexpr const char* WriteDescriptor =
    "GattCharacteristic.WriteClientCharacteristicConfigurationDescriptorAsync";

// Devices and faults arranged through these are taken back at the end of the test.
void AddDevice(BluetoothAddress address, const char* name);
void FailMember(const std::string& member, std::int32_t code = Fails);

// Send one packet or notification and wait until the library has handled it.
void Advertise(BluetoothAddress address, std::int32_t packet = OrvPacket_Advertisement,
               std::int32_t watcher = -1);
void Notify(BluetoothAddress address, const Bytes& data, std::int32_t registration = -1);

// `count` bytes that go on from `first`.
Bytes Sequence(std::size_t count, std::size_t first = 0);

// The library's calls into the world's objects since the one of number `from`, except requests for
// other interfaces.
Lines Calls(std::int32_t from = 0);

// Expects what `call` returns, and the lines that it writes into an emptied log.
template <typename Call>
void ExpectCall(Call&& call, ResultCode result, const Lines& lines) {
    EXPECT_EQ(LinesOf([&] { EXPECT_EQ(call(), result); }), lines);
}

// Expects how long `body` takes on the world's clock. Real time is certain in one direction only.
template <typename Body>
void ExpectTakes(std::int64_t ms, Body&& body) {
    const std::int64_t start = OrvWorld_Now();
    body();
    const std::int64_t took = OrvWorld_Now() - start;
    const bool simulated = OrvWorld_TimeIsSimulated() != 0;
    EXPECT_TRUE(simulated ? took == ms : took >= ms - 20) << took << " ms instead of " << ms;
}

// Waits until the log holds `text`; false after 10 s.
bool AwaitLog(const std::string& text);

// A world with the adapter, one radio that is on and one device, and an empty log that is switched
// on. Afterwards nothing of the world may still be held, and no call may have been out of order.
class WorldTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;
};

// Names a row by its field `name`.
constexpr auto RowName = [](const auto& row) { return std::string(row.param.name); };

}  // namespace orv
