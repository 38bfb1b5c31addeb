// Tests the library's exports with the kernel's Bluetooth stack.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include "tests/radio/radio_fixture.h"

namespace orv::radio {
namespace {

using RadioTest = RadioFixture;

TEST_F(RadioTest, SessionsListNameAndValuesAndFollowThem) {
    const Scan scan;
    ASSERT_TRUE(Hears(scan, First));
    EXPECT_STREQ(scan.Find(First).name, "ORV-hci1");
    EXPECT_TRUE(Await([&] { return scan.Find(First).value0500 == 7; }));
    EXPECT_EQ(scan.Find(First).value1130, 8);
    EXPECT_EQ(scan.Find(First).data1118[0], 9);
    const Scan second;
    testBed.Do("name 0 ORV-renamed");
    testBed.Do("values 0 17 18 191a1b1c1d1e1f2021222324");
    for (const Scan* each : {&scan, &second}) {
        EXPECT_TRUE(Await([&] {
            const DiscoveredDevice device = each->Find(First);
            return strcmp(device.name, "ORV-renamed") == 0 && device.value0500 == 0x17 &&
                   device.value1130 == 0x18 && device.data1118[11] == 0x24;
        }));
    }
    testBed.Do("name 0 ORV-hci1");
}

TEST_F(RadioTest, EchoesByteForByte) {
    Connect(First);
    Bytes sent(65536);
    for (std::size_t i = 0; i < sent.size(); ++i) {
        sent[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    }
    Bytes received;
    for (std::size_t i = 0; i < sent.size(); i += 244) {
        const auto length = static_cast<std::int32_t>(std::min<std::size_t>(244, sent.size() - i));
        ASSERT_EQ(OrvDevice_Send(First, length, &sent[i]), length) << i;
    }
    EXPECT_EQ(Receive(First, sent.size()), sent);
    EXPECT_EQ(OrvDevice_Disconnect(First), 0);
}

// Runs orv as a separate process, which loads the library from orv's directory.
TEST_F(RadioTest, EchoesThroughATerminalAndASocket) {
    {
        const Scan scan;
        ASSERT_TRUE(Hears(scan, First));
    }
    EXPECT_EQ(system("python3 bridge.py ./orv 00:AA:01:01:00:01"), 0);
}

TEST_F(RadioTest, TakesEveryNotificationInOrder) {
    Connect(First);
    testBed.Do("burst 0 10000 244");
    const Bytes received = Receive(First, 2440000);
    ASSERT_EQ(received.size(), 2440000u);
    for (std::uint32_t i = 0; i < 10000; ++i) {
        std::uint32_t number = 0;
        memcpy(&number, &received[244 * i], 4);
        ASSERT_EQ(number, i);
    }
    EXPECT_EQ(OrvDevice_Disconnect(First), 0);
}

TEST_F(RadioTest, WritesUpToTheLongestValue) {
    // Bluetooth allows values of 512 bytes, but this daemon rejects more than 510.
    constexpr int Longest = 510;
    Connect(First);
    const int before = std::stoi(testBed.Ask("received 0"));
    const Bytes block(Longest + 1, 5);
    EXPECT_EQ(OrvDevice_Send(First, Longest, block.data()), Longest);
    EXPECT_EQ(Receive(First, Longest).size(), std::size_t{Longest});
    EXPECT_EQ(OrvDevice_Send(First, Longest + 1, block.data()), Longest + 1)
        << "refused by an answer";
    EXPECT_EQ(std::stoi(testBed.Ask("received 0")), before + Longest);
    testBed.Do("mode 0 refuse");
    EXPECT_EQ(OrvDevice_Send(First, 1, block.data()), 1) << "refused by an answer";
    testBed.Do("mode 0 silent");
    EXPECT_EQ(OrvDevice_Send(First, 1, block.data()), 1);
    EXPECT_EQ(OrvDevice_Receive(First, 0, nullptr), 0);
    EXPECT_EQ(std::stoi(testBed.Ask("received 0")), before + Longest + 1);
}

TEST_F(RadioTest, SeveralLinksStayApart) {
    Connect(First);
    // A controller supports one link, and hci0 is in use, so hci2 searches for peripheral 1.
    testBed.Do("appear 1");
    ASSERT_TRUE(Await([&] {
        testBed.Do("scan hci2 on");
        testBed.Do("advertise 1");
        testBed.Do("scan hci2 off");
        return OrvDevice_Connect(Second) == 0;
    }));
    ASSERT_EQ(OrvDevice_Connect(First), 0) << "a second link to the same device";
    ExpectEcho(Second);
    ExpectEcho(First);
    testBed.Do("burst 0 500 100");
    testBed.Do("burst 1 500 200");
    EXPECT_EQ(Receive(First, 50000).size(), 50000u);
    EXPECT_EQ(Receive(Second, 100000).size(), 100000u);
    EXPECT_EQ(OrvDevice_Disconnect(First), 0);
    EXPECT_EQ(Receive(First, 50003).size(), 50003u) << "the younger link has received all of it";
    ExpectEcho(First);
    EXPECT_EQ(OrvDevice_Disconnect(Second), 0);
    testBed.Do("vanish 1");
}

TEST_F(RadioTest, DisconnectsWhileNotificationsArrive) {
    for (int i = 0; i < 3; ++i) {
        Connect(First);
        testBed.Do("burst 0 2000 244");
        EXPECT_FALSE(Receive(First, 244 * 20).empty());
        EXPECT_EQ(OrvDevice_Disconnect(First), 0);
        EXPECT_EQ(OrvDevice_Receive(First, 0, nullptr), -1);
    }
    Connect(First);
    ExpectEcho(First);
}

TEST_F(RadioTest, DeviceVanishesAndComesBack) {
    EXPECT_EQ(OrvDevice_Connect(0x00AA01010099), -1) << "never heard";
    Connect(First);
    testBed.Do("vanish 0");
    const std::uint8_t byte = 0;
    EXPECT_TRUE(Await([&] { return OrvDevice_Send(First, 1, &byte) == -1; }));
    EXPECT_EQ(OrvDevice_Receive(First, 0, nullptr), 0) << "the link stays until it is closed";
    EXPECT_EQ(OrvDevice_Disconnect(First), 0);
    EXPECT_EQ(OrvDevice_Connect(First), -1);
    testBed.Do("appear 0");
    Connect(First);
    ExpectEcho(First);
}

TEST_F(RadioTest, RadioGoesOffDuringALink) {
    Connect(First);
    testBed.Do("power hci0 off");
    const std::uint8_t byte = 0;
    EXPECT_TRUE(Await([&] { return OrvDevice_Send(First, 1, &byte) == -1; }));
    EXPECT_EQ(OrvDevice_Disconnect(First), 0);
    PowerAll("off");  // otherwise, the peripheral would keep the link
    testBed.Appear();
    Connect(First);
    ExpectEcho(First);
}

TEST_F(RadioTest, OrvScansTalksSendsAndReceives) {
    const auto run = [](const std::string& command) {
        EXPECT_EQ(system(command.c_str()), 0) << command;
    };
    run("./orv check | grep -q available");
    run("./orv scan --seconds 5 | grep -q ORV-hci1");
    run("printf \"hello\\n\" | ./orv talk 00:AA:01:01:00:01 --seconds 3 | grep hello");
    run("sleep 3; head -c 5000 peripheral.py >sent; ./orv send 00:AA:01:01:00:01 sent");
    std::atomic<bool> received{false};
    std::thread receiver([&] {
        run("sleep 3; ./orv receive 00:AA:01:01:00:01 --output got --seconds 20 --bytes 2000");
        received = true;
    });
    while (!received) {
        testBed.Do("burst 0 20 100");
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
    }
    receiver.join();
    // An emulated controller measures no signal strength and confirms a write at once, and the
    // daemon rejects the longest block. Only these three checks of orv doctor may be refuted.
    run("sleep 3; ./orv doctor --device 00:AA:01:01:00:01 --echo >doctor.txt; [ $? = 7 ]");
    run("! grep ^refuted doctor.txt | grep -vE \"[(](signal|write_kind|block_size)[)]\"");
    run("[ $(grep -cE \"^confirmed .*[(](connect|notifications|throughput)[)]\" doctor.txt) = 3 ]");
    PowerAll("off");
    run("./orv check 2>&1 | grep \"the Bluetooth radio is off\"");
    testBed.KillControllers();
    run("./orv check 2>&1 | grep \"there is no Bluetooth adapter\"");
    testBed.KillDaemon();
    run("./orv check 2>&1 | grep \"the Bluetooth daemon does not run\"");
    testBed.StartControllers();
    testBed.StartDaemon();
    testBed.Appear();
}

// In half of the rounds, the daemon ends within 1 ms after the host enters a phase.
TEST_F(RadioTest, HostOutlivesTheDaemonAtRandomMoments) {
    enum Phase { Scanning, Connecting, Sending, Receiving, Phases };
    std::atomic<Phase> phase{Scanning};
    std::atomic<bool> ends{false};
    std::thread host([&] {
        const Bytes block(244, 1);
        std::uint8_t bytes[244];
        while (!ends) {
            phase = Scanning;
            const Scan scan;
            Await([&] { return ends || scan.Find(First).address != 0; }, 1);
            phase = Connecting;
            if (OrvDevice_Connect(First) != 0) {
                continue;
            }
            for (int i = 0; i < 10; ++i) {
                phase = Sending;
                OrvDevice_Send(First, 244, block.data());
                phase = Receiving;
                Await([&] { return OrvDevice_Receive(First, 244, bytes) != 0; }, 1);
            }
            OrvDevice_Disconnect(First);
        }
    });
    std::mt19937 random = Random();
    int killed[Phases] = {};
    for (int i = 0; i < 50; ++i) {
        const auto wanted = static_cast<Phase>(i % Phases);
        EXPECT_TRUE(Await([&] {
            testBed.Do("advertise 0");
            return Await([&] { return phase == wanted; }, 1);
        })) << "the host hangs, or the library does not work again";
        std::this_thread::sleep_for(
            std::chrono::microseconds(random() % (i / Phases % 2 == 0 ? 1000 : 200000)));
        ++killed[phase];
        testBed.KillDaemon();
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 200));
        testBed.StartDaemon();
        testBed.Appear();
    }
    ends = true;
    host.join();
    std::printf("killed while scanning %d, connecting %d, sending %d, receiving %d\n",
                killed[Scanning], killed[Connecting], killed[Sending], killed[Receiving]);
    for (const int count : killed) {
        EXPECT_GT(count, 0);
    }
    Connect(First);
    ExpectEcho(First);
}

TEST_F(RadioTest, ScanOutlivesRadioControllersAndDaemon) {
    EXPECT_EQ(BluetoothAvailable(), 0);
    const Scan scan;
    EXPECT_TRUE(Hears(scan, First));
    // Only a running scan can detect the device's new name.
    const auto hearsAgain = [&](const std::string& name) {
        testBed.Do("name 0 " + name);
        return Hears(scan, First) && Await([&] { return scan.Find(First).name == name; });
    };
    PowerAll("off");
    EXPECT_TRUE(Await([] { return BluetoothAvailable() == -1; }));
    EXPECT_EQ(OrvDevice_Connect(First), -1);
    testBed.Appear();
    EXPECT_TRUE(Await([] { return BluetoothAvailable() == 0; }));
    EXPECT_TRUE(hearsAgain("ORV-on"));

    testBed.KillControllers();
    EXPECT_TRUE(Await([] { return BluetoothAvailable() == -1; })) << "without controllers";
    EXPECT_EQ(OrvDevice_Connect(First), -1);
    testBed.StartControllers();
    testBed.Appear();
    EXPECT_TRUE(hearsAgain("ORV-plugged"));

    testBed.KillDaemon();
    EXPECT_TRUE(Await([] { return BluetoothAvailable() == -1; })) << "without a daemon";
    EXPECT_EQ(OrvDevice_Connect(First), -1);
    testBed.StartDaemon();
    testBed.Appear();
    EXPECT_TRUE(hearsAgain("ORV-daemon"));
    testBed.Do("name 0 ORV-hci1");
}

}  // namespace
}  // namespace orv::radio
