// Compares the library with a minimal hand-written client and with bleak, and prints the rows of
// docs/performance.md. The library must lose no bytes; its speed is not checked.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "tests/radio/radio_fixture.h"

namespace orv::radio {
namespace {

using RadioSpeed = RadioFixture;

constexpr int Rounds = 2;
constexpr int Count = 3000;

std::vector<std::string> ClientOf(const std::string& kind) {
    return kind == "bleak" ? std::vector<std::string>{"python3", "by_bleak.py", FirstText}
                           : std::vector<std::string>{"./radio_bench", kind, FirstText};
}

// Returns the connect time in ms, or -1 on failure. Retries like RadioFixture::Connect.
int ConnectBy(Child& client) {
    int ms = -1;
    for (int i = 0; i < 10 && ms < 0; ++i) {
        ms = std::atoi(client.Ask("connect").c_str());
    }
    return ms;
}

TEST_F(RadioSpeed, OfNotifications) {
    {
        const Scan scan;
        ASSERT_TRUE(Hears(scan, First));
    }
    for (int i = 0; i < 3 * Rounds; ++i) {
        const std::string kind =
            std::array{"hand", "library", "bleak"}[static_cast<unsigned>(i % 3)];
        Child client(ClientOf(kind));
        const int connectMs = ConnectBy(client);
        if (connectMs < 0) {
            std::printf("SPEED %-7s does not connect\n", kind.c_str());
            EXPECT_NE(kind, "library");
            continue;
        }
        testBed.Do("burst 0 " + std::to_string(Count) + " 244");
        long bytes = 0;
        long ms = 0;
        long processorUs = 0;
        sscanf(client.Ask("receive " + std::to_string(Count * 244)).c_str(), "%ld %ld %ld", &bytes,
               &ms, &processorUs);
        EXPECT_EQ(client.Ask("disconnect"), "0");
        std::printf(
            "SPEED %-7s connect %4d ms, %ld of %d bytes, %.1f us a notification, %.0f a second\n",
            kind.c_str(), connectMs, bytes, 244 * Count, static_cast<double>(processorUs) / Count,
            1000.0 * Count / static_cast<double>(std::max(ms, 1L)));
        EXPECT_TRUE(bytes == 244 * Count || kind != "library");
        // The daemon closes a link 2 s after the disconnect request.
        std::this_thread::sleep_for(std::chrono::milliseconds(3500));
    }
}

TEST_F(RadioSpeed, OfAdvertisements) {
    for (int i = 0; i < 2 * Rounds; ++i) {
        const char* const kind = i % 2 == 0 ? "hand" : "library";
        Child client(ClientOf(kind));
        std::atomic<bool> ends{false};
        int heard = 0;
        long processorUs = 0;
        std::thread scan([&] {
            sscanf(client.Ask("scan 3").c_str(), "%d %ld", &heard, &processorUs);
            ends = true;
        });
        int advertised = 0;
        for (; !ends; ++advertised) {
            char command[100];
            snprintf(command, sizeof command, "values 0 %02x 01 02", advertised % 256);
            testBed.Do(command);
        }
        scan.join();
        std::printf("SPEED %-7s %d advertised, %d heard, %.1f us an advertisement\n", kind,
                    advertised, heard, static_cast<double>(processorUs) / advertised);
        EXPECT_GT(heard, 0) << kind;
    }
}

}  // namespace
}  // namespace orv::radio
