// Compares the queue of received bytes and the list of devices with simple models, and tests the
// limits of ids and counts.
#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <random>
#include <vector>

#include "frame/export_frame.h"
#include "link/receive_queue.h"
#include "platform/system.h"
#include "scanner/scanner_session.h"

namespace orv {
namespace {

TEST(ReceiveQueue, IsOneStreamWhateverTheSizes) {
    std::mt19937 random(20260101);
    ReceiveQueue queue;
    std::deque<std::uint8_t> model;
    std::uint8_t next = 0;
    for (int step = 0; step < 3000; ++step) {
        const auto amount = std::size_t{1} << random() % 14;
        if (random() % 2) {
            for (std::size_t i = 0; i < amount; ++i) {
                model.push_back(next);
                queue.Append(next++);
            }
        } else if (random() % 100 == 0) {
            ASSERT_EQ(queue.Clear(), model.size());
            model.clear();
        } else {
            std::vector<std::uint8_t> taken(amount, 0xEE);
            const std::size_t count = queue.Take(taken.data(), amount);
            ASSERT_EQ(count, std::min(amount, model.size()));
            ASSERT_TRUE(
                std::equal(taken.begin(), taken.begin() + static_cast<long>(count), model.begin()));
            ASSERT_TRUE(count == amount || taken[count] == 0xEE) << "wrote beyond what it took";
            model.erase(model.begin(), model.begin() + static_cast<long>(count));
        }
        ASSERT_EQ(queue.Size(), model.size());
    }
}

// Returns address `i` of a pattern. The addresses of a pattern collide if the hash is weak.
BluetoothAddress Pattern(std::size_t pattern, BluetoothAddress i) {
    switch (pattern) {
        case 0:
            return i;
        case 1:
            return i << 32;
        case 2:
            return i << 48;
        case 3:
            return i * 0x10001;  // the XOR of the two 16-bit parts is 0
        default:
            return i % 2 ? ~i : i << 12;
    }
}

TEST(DiscoveredDevices, AreFoundWhereTheyWereAppended) {
    for (std::size_t pattern = 0; pattern < 5; ++pattern) {
        DiscoveredDevices devices({pattern, 7});
        for (int round = 0; round < 2; ++round) {
            constexpr std::size_t Count = 700;  // fills chunks of four sizes
            for (std::size_t count = 0; count < Count; ++count) {
                ASSERT_EQ(devices.Size(), count);
                for (std::size_t i = 0; i < Count; ++i) {
                    const DiscoveredDevice* const found = devices.Find(Pattern(pattern, i));
                    ASSERT_EQ(found, i < count ? &devices.At(i) : nullptr) << i << " of " << count;
                }
                devices.Append(NewRecord(Pattern(pattern, count), "ORV", -60));
                ASSERT_EQ(devices.At(count).address, Pattern(pattern, count));
            }
            EXPECT_NE(devices.TakeContent(), nullptr);
        }
    }
}

// Returns the number of addresses in the fullest bucket. The average is one.
std::size_t LongestChain(const AddressHash::Key& key,
                         const std::vector<BluetoothAddress>& addresses) {
    const AddressHash hashOf(key);
    std::vector<std::size_t> lengths(addresses.size());
    for (const BluetoothAddress address : addresses) {
        ++lengths[hashOf(address) % lengths.size()];
    }
    return *std::max_element(lengths.begin(), lengths.end());
}

TEST(AddressHash, DistributesChosenAddressesEvenly) {
    constexpr std::size_t Count = 4096;
    // With random hashes, about one of a million sets of addresses has a longer chain.
    constexpr std::size_t Longest = 12;
    std::vector<BluetoothAddress> addresses(Count);
    for (std::size_t pattern = 0; pattern < 5; ++pattern) {
        for (std::size_t i = 0; i < Count; ++i) {
            addresses[i] = Pattern(pattern, i);
        }
        EXPECT_LE(LongestChain({1, 2}, addresses), Longest) << pattern;
    }
    // Addresses that collide under one key do not collide under keys that differ in one bit.
    const AddressHash known({1, 2});
    BluetoothAddress next = 0;
    for (BluetoothAddress& address : addresses) {
        while (known(++next) % Count != 0) {
        }
        address = next;
    }
    EXPECT_EQ(LongestChain({1, 2}, addresses), Count);
    EXPECT_LE(LongestChain({3, 2}, addresses), Longest);
    EXPECT_LE(LongestChain({1, 3}, addresses), Longest);
    // The expected value comes from an independent implementation.
    const AddressHash hashOf({0xAED66CE184BE2329, 0xEBE9BBF1F1499052});
    EXPECT_EQ(hashOf(0xA0B1C2000001), 0xFBA3BB76u);
}

TEST(RandomBits, TakeBothValuesInEveryBit) {
    std::uint64_t ever = 0;
    std::uint64_t always = UINT64_MAX;
    for (int i = 0; i < 128; ++i) {  // one of 2^121 runs fails by chance
        const std::uint64_t bits = system::RandomBits();
        ever |= bits;
        always &= bits;
    }
    EXPECT_EQ(ever, UINT64_MAX);
    EXPECT_EQ(always, 0u);
}

TEST(GrowingArray, RejectsIndexesAboveItsMaximum) {
    GrowingArray<char> array;
    constexpr std::size_t Last = GrowingArray<char>::MaxLength - 1;
    array.MakeRoom(Last);
    array[Last] = 'x';
    EXPECT_EQ(array[Last], 'x');
    EXPECT_THROW(array.MakeRoom(Last + 1), std::bad_alloc);
}

TEST(ScannerSessions, AreNotCreatedAboveTheLargestId) {
    {
        const Lock lock(scannerMutex);
        scannerSessions.sessions.push_back(
            {std::numeric_limits<std::int32_t>::max() - 1, {}, DiscoveredDevices({})});
    }
    EXPECT_EQ(OrvScanner_Initialize(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(OrvScanner_Initialize(), -1);
    const Lock lock(scannerMutex);
    scannerSessions.sessions.clear();
}

TEST(CountResult, NeverLooksLikeAFailure) {
    EXPECT_EQ(CountResult(7), 7);
    for (const std::size_t count : {std::size_t{INT32_MAX}, std::size_t{INT32_MAX} + 1, SIZE_MAX}) {
        EXPECT_EQ(CountResult(count), INT32_MAX);
    }
}

}  // namespace
}  // namespace orv
