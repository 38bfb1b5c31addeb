// Eight host threads make random calls, while eight threads send events of devices. The tests check
// conditions that hold in any order of the calls and events.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <mutex>
#include <random>
#include <set>
#include <thread>

#include "tests/support/world.h"

namespace orv {
namespace {

constexpr int Threads = 8;
constexpr int Rounds = 60;
constexpr std::size_t BlockSize = 7;
constexpr std::size_t StreamSize = Rounds * BlockSize;

BluetoothAddress AddressOf(int thread) {
    return 0x0200 + static_cast<BluetoothAddress>(thread);
}

struct Findings {
    void Expect(bool holds, const char* what) {
        if (!holds) {
            const std::lock_guard<std::mutex> lock(mutex);
            first = first.empty() ? what : first;
        }
    }
    std::mutex mutex;
    std::string first;
    std::set<ResultCode> ids;  // ids of existing sessions
};

// Makes the calls that `script` chooses, and receives from the thread's own device.
void RunHost(int thread, const std::vector<std::uint8_t>& script, Findings& findings) {
    const BluetoothAddress own = AddressOf(thread);
    Bytes stream;
    std::uint8_t buffer[64];
    for (std::size_t step = 0; stream.size() < StreamSize || step < script.size(); ++step) {
        const std::uint8_t what = script[step % script.size()];
        const ResultCode count = OrvDevice_Receive(own, 1 + what % 64, buffer);
        findings.Expect(count >= 0, "a linked device has no queue");
        stream.insert(stream.end(), buffer, buffer + std::max(count, 0));
        DiscoveredDevice info = {};
        switch (what % 8) {
            case 0:
                findings.Expect(BluetoothAvailable() == 0, "Bluetooth has gone");
                break;
            case 1: {
                std::unique_lock<std::mutex> lock(findings.mutex);
                const ResultCode id = OrvScanner_Initialize();
                const bool isNew = id >= 0 && findings.ids.insert(id).second;
                lock.unlock();
                findings.Expect(isNew, "an id was given out twice");
                findings.Expect(OrvScanner_Start(id) == 0, "a start failed");
                findings.Expect(OrvScanner_GetDeviceCount(id) >= 0, "a session has gone");
                findings.Expect(OrvScanner_Stop(id) == 0, "a stop failed");
                lock.lock();
                findings.ids.erase(id);
                lock.unlock();
                findings.Expect(OrvScanner_Deinitialize(id) == 0, "a removal failed");
                break;
            }
            case 2:
                findings.Expect(OrvDevice_Send(own, 3, buffer) == 3, "a send failed");
                break;
            case 3:
                findings.Expect(OrvDevice_Connect(AddressOf(Threads)) == 0, "a connect failed");
                OrvDevice_Disconnect(AddressOf(Threads));
                OrvDevice_Flush(AddressOf(Threads));
                break;
            case 4:
                Logging_AppendLine("host", 4);
                break;
            case 5:
                if (OrvScanner_GetDeviceInfo(0, what % Threads, &info) == 0) {
                    findings.Expect(std::string(info.name) == "ORV-storm", "a torn record");
                }
                break;
            default:
                std::this_thread::yield();
        }
    }
    findings.Expect(stream == Sequence(StreamSize), "a stream has a gap, a double or a wrong byte");
}

void RunSender(int thread) {
    for (std::size_t round = 0; round < Rounds; ++round) {
        const Bytes block = Sequence(BlockSize, round * BlockSize);
        OrvWorld_Notify(AddressOf(thread), block.data(), BlockSize, 0);
        OrvWorld_Advertise(AddressOf(thread), static_cast<std::int32_t>(round % 2), -1);
        OrvWorld_Notify(AddressOf(Threads), block.data(), BlockSize, -1);
    }
}

class StormTest : public WorldTest {};

TEST_F(StormTest, EveryOrderKeepsStreamsIdsRecordsAndLines) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 20 && !HasFailure(); ++round) {
        for (int thread = 0; thread <= Threads; ++thread) {
            AddDevice(AddressOf(thread), "ORV-storm");
        }
        Findings findings;
        findings.ids.insert(OrvScanner_Initialize());
        OrvScanner_Start(0);
        for (int thread = 0; thread < Threads; ++thread) {
            OrvDevice_Connect(AddressOf(thread));
        }
        std::vector<std::thread> threads;
        for (int thread = 0; thread < Threads; ++thread) {
            std::vector<std::uint8_t> script(20);
            std::generate(script.begin(), script.end(), std::ref(random));
            threads.emplace_back(RunSender, thread);
            threads.emplace_back([=, &findings] { RunHost(thread, script, findings); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        OrvWorld_Settle();
        findings.Expect(OrvScanner_GetDeviceCount(0) == Threads, "a device is missing");
        LogLines();  // fails the test if a line is incomplete
        EXPECT_EQ(findings.first, "");
        TearDown();
        SetUp();
    }
}

// Eight threads send events to a session and a link that no longer exist.
TEST_F(StormTest, HundredThousandLateEventsChangeNothing) {
    constexpr int Late = 100000;
    ASSERT_EQ(OrvScanner_Initialize(), 0);
    ASSERT_EQ(OrvScanner_Start(0), 0);
    ASSERT_EQ(OrvScanner_Deinitialize(0), 0);
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    ASSERT_EQ(OrvDevice_Disconnect(Address), 0);
    ASSERT_EQ(OrvScanner_Initialize(), 0);
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    Logging_Disable();
    std::vector<std::thread> senders;
    for (int thread = 0; thread < Threads; ++thread) {
        senders.emplace_back([] {
            for (int i = 0; i < Late / Threads / 2; ++i) {
                EXPECT_EQ(OrvWorld_Advertise(Address, i % 2, 0), 1);
                EXPECT_EQ(OrvWorld_Notify(Address, Sequence(3).data(), 3, 0), 1);
            }
        });
    }
    for (std::thread& thread : senders) {
        thread.join();
    }
    OrvWorld_Settle();
    EXPECT_EQ(OrvWorld_CallCount("BluetoothLEAdvertisement.get_LocalName"), Late / 2);
    EXPECT_EQ(OrvWorld_CallCount("DataReader.FromBuffer"), Late / 2);
    EXPECT_EQ(OrvScanner_GetDeviceCount(0), 0);
    EXPECT_EQ(OrvDevice_Flush(Address), 0);
}

}  // namespace
}  // namespace orv
