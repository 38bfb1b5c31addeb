// Scans and receives like a host, for the radio tests.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "quelvixwinlib.h"

namespace orv::radio {

using Bytes = std::vector<std::uint8_t>;

// Waits until a condition is true. Returns false after `seconds`; the default suits slow machines.
inline bool Await(const std::function<bool()>& condition, int seconds = 60) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

class Scan {
  public:
    Scan() : id(OrvScanner_Initialize()) { EXPECT_EQ(OrvScanner_Start(id), 0); }
    ~Scan() {
        OrvScanner_Stop(id);
        OrvScanner_Deinitialize(id);
    }
    Scan(const Scan&) = delete;
    Scan& operator=(const Scan&) = delete;

    // Returns the record of a device, with the address 0 if the device is not listed.
    DiscoveredDevice Find(BluetoothAddress address) const {
        DiscoveredDevice device = {};
        for (int i = 0; OrvScanner_GetDeviceInfo(id, i, &device) == 0; ++i) {
            if (device.address == address) {
                return device;
            }
        }
        return {};
    }
    bool Hears(BluetoothAddress address) const {
        return Await([&] { return Find(address).address != 0; });
    }

  private:
    const std::int32_t id;
};

// Returns a generator with the seed ORV_SEED or a new one. Flushes the printed seed, because a
// crash would lose buffered output.
inline std::mt19937 Random() {
    const char* const given = std::getenv("ORV_SEED");
    const auto seed =
        given != nullptr ? static_cast<unsigned>(std::atoi(given)) : std::random_device()();
    std::printf("ORV_SEED=%u\n", seed);
    std::fflush(stdout);
    return std::mt19937(seed);
}

// Receives `count` bytes from the device, or fewer if no more arrive.
inline Bytes Receive(BluetoothAddress address, std::size_t count) {
    Bytes all;
    Bytes part(65536);
    while (all.size() < count) {
        ResultCode taken = 0;
        Await([&] { return (taken = OrvDevice_Receive(address, 65536, part.data())) != 0; });
        if (taken <= 0) {
            break;
        }
        all.insert(all.end(), part.begin(), part.begin() + taken);
    }
    return all;
}

}  // namespace orv::radio
