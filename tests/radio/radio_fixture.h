#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/radio/host.h"
#include "tests/radio/test_bed.h"

namespace orv::radio {

constexpr const char* FirstText = "00:AA:01:01:00:01";

class RadioFixture : public testing::Test {
  protected:
    void SetUp() override {
        testBed.Repair();
        testBed.Do("mode 0 echo");
    }

    void TearDown() override {
        testBed.Repair();
        for (const BluetoothAddress address : {First, Second}) {
            while (OrvDevice_Disconnect(address) == 0) {
            }
        }
    }

    // Waits until the device is listed. Restarts its advertising every second: an emulated
    // controller reports a device only when scanning or advertising starts, which may be before the
    // kernel accepts reports.
    bool Hears(const Scan& scan, BluetoothAddress address) {
        return Await([&] {
            if (Await([&] { return scan.Find(address).address != 0; }, 1)) {
                return true;
            }
            testBed.Do(address == First ? "advertise 0" : "advertise 1");
            return false;
        });
    }
    // Scans for the device, then connects. Retries, because the daemon sometimes rejects a connect
    // that follows soon after a disconnect.
    void Connect(BluetoothAddress address) {
        {
            const Scan scan;
            ASSERT_TRUE(Hears(scan, address));
        }
        ASSERT_TRUE(Await([&] { return OrvDevice_Connect(address) == 0; }));
    }
    static void ExpectEcho(BluetoothAddress address) {
        const Bytes sent = {1, 2, 3};
        EXPECT_EQ(OrvDevice_Send(address, 3, sent.data()), 3);
        EXPECT_EQ(Receive(address, 3), sent);
    }
    void PowerAll(const char* state) {
        for (const char* adapter : {"hci0", "hci1", "hci2", "hci3"}) {
            testBed.Do(std::string("power ") + adapter + " " + state);
        }
    }

    TestBed& testBed = TestBed::Get();
};

}  // namespace orv::radio
