// Everything at once: several devices sending and advertising on their own threads while host
// threads poll, send and scan. Streams stay complete and in order.
#include <atomic>
#include <string>
#include <thread>

#include "support/world.h"

namespace orv {
namespace {

constexpr int Devices = 3;
constexpr std::size_t Blocks = 150;
constexpr std::size_t BlockSize = 11;

BluetoothAddress AddressOf(int device) {
    return 0x0100 + static_cast<BluetoothAddress>(device);
}

using ThreadsTest = WorldTest;

// Takes what comes from one device until `finished` and nothing is left.
Bytes TakeAll(int device, const std::atomic<bool>& finished) {
    Bytes stream;
    for (;;) {
        const bool last = finished;
        std::uint8_t buffer[64];
        const ResultCode count = OrvDevice_Receive(AddressOf(device), 64, buffer);
        if (count < 0 || (count == 0 && last)) {
            EXPECT_EQ(count, 0);
            return stream;
        }
        stream.insert(stream.end(), buffer, buffer + count);
        std::this_thread::yield();
    }
}

TEST_F(ThreadsTest, StreamsStayCompleteAndInOrder) {
    ASSERT_EQ(OrvScanner_Initialize(), 0);
    ASSERT_EQ(OrvScanner_Start(0), 0);
    for (int device = 0; device < Devices; ++device) {
        AddDevice(AddressOf(device), "ORV-many");
        ASSERT_EQ(OrvDevice_Connect(AddressOf(device)), 0);
    }
    std::atomic<bool> finished{false};
    std::vector<std::thread> senders;
    std::vector<std::thread> hosts;
    for (int device = 0; device < Devices; ++device) {
        senders.emplace_back([device] {
            for (std::size_t block = 0; block < Blocks; ++block) {
                const Bytes data = Sequence(BlockSize, block * BlockSize);
                OrvWorld_Notify(AddressOf(device), data.data(), BlockSize, -1);
                OrvWorld_Advertise(AddressOf(device), static_cast<std::int32_t>(block % 2), -1);
            }
        });
        hosts.emplace_back([device, &finished] {
            EXPECT_TRUE(TakeAll(device, finished) == Sequence(Blocks * BlockSize));
        });
    }
    hosts.emplace_back([&finished] {
        const Bytes data = Sequence(20);
        while (!finished) {
            EXPECT_EQ(OrvDevice_Send(AddressOf(0), 20, data.data()), 20);
            EXPECT_EQ(OrvDevice_Connect(Address), 0);
            EXPECT_EQ(OrvDevice_Disconnect(Address), 0);
        }
    });
    hosts.emplace_back([&finished] {
        while (!finished) {
            EXPECT_EQ(BluetoothAvailable(), 0);
            const ResultCode second = OrvScanner_Initialize();
            EXPECT_GE(second, 1);
            EXPECT_EQ(OrvScanner_Start(second), 0);
            EXPECT_EQ(OrvScanner_Deinitialize(second), 0);
            for (std::int32_t i = OrvScanner_GetDeviceCount(0) - 1; i >= 0; --i) {
                DiscoveredDevice info = {};
                EXPECT_EQ(OrvScanner_GetDeviceInfo(0, i, &info), 0);
                EXPECT_TRUE(std::string(info.name) == "ORV-many") << info.name;
            }
        }
    });
    for (std::thread& thread : senders) {
        thread.join();
    }
    OrvWorld_Settle();
    finished = true;
    for (std::thread& thread : hosts) {
        thread.join();
    }
    EXPECT_EQ(OrvScanner_GetDeviceCount(0), Devices);
    EXPECT_GT(LogLines().size(), 2 * Devices * Blocks);
}

}  // namespace
}  // namespace orv
