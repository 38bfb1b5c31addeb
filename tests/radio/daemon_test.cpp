// Tests the library with a test double for the Bluetooth daemon on a private message bus. The
// double imitates the worst behaviour of real daemons.
#include <dirent.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <numeric>

#include "tests/radio/allocations.h"
#include "tests/radio/host.h"
#include "tests/radio/private_bus.h"
#include "tests/radio/stand_in.h"

namespace orv::radio {
namespace {

using namespace std::chrono;

PrivateBus* privateBus = nullptr;

constexpr ResultCode TimedOut = -2;  // no result of the library

// Repeats a call, and `prepare` before it, until the call succeeds or fails without a timeout. A
// busy machine can stop this process or the bus for longer than each timeout of the library; the
// shortest one is 300 ms. Returns TimedOut if each call timed out.
ResultCode RepeatAfterTimeout(
    const std::function<ResultCode()>& call, const std::function<void()>& prepare = [] {}) {
    ResultCode result = -1;
    const bool hasEnded = Await([&] {
        prepare();
        const auto start = steady_clock::now();
        result = call();
        return result != -1 || steady_clock::now() - start < 250ms;
    });
    return hasEnded ? result : TimedOut;
}
ResultCode Connect(const std::function<void()>& prepare = [] {}) {
    return RepeatAfterTimeout([] { return OrvDevice_Connect(Address); }, prepare);
}
// Sends the bytes and expects their echo. Bytes of a write that timed out are also echoed.
void ExpectEcho(const Bytes& sent = {1, 2, 3}) {
    const auto size = static_cast<ResultCode>(sent.size());
    Bytes all;
    EXPECT_EQ(RepeatAfterTimeout([&] {
                  all.insert(all.end(), sent.begin(), sent.end());
                  return OrvDevice_Send(Address, size, sent.data());
              }),
              size);
    EXPECT_EQ(Receive(Address, all.size()), all);
}

class DaemonTest : public testing::Test {
  protected:
    void SetUp() override {
        daemon.Start();
        Await([] { return BluetoothAvailable() == 0; });
    }
    void TearDown() override { CloseAll(); }

    static void CloseAll() {
        while (OrvDevice_Disconnect(Address) == 0) {
        }
    }

    void ExpectWorks() {
        EXPECT_TRUE(Await([] { return OrvDevice_Connect(Address) == 0; }));
        ExpectEcho();
        EXPECT_EQ(OrvDevice_Disconnect(Address), 0);
    }

    StandIn daemon;
};

milliseconds DurationOfRefusal(BluetoothAddress address) {
    const auto start = steady_clock::now();
    EXPECT_EQ(OrvDevice_Connect(address), -1);
    return duration_cast<milliseconds>(steady_clock::now() - start);
}
// Returns true if a connect fails before the library's timeout of 2000 ms. Retries, because a busy
// machine can delay the failure.
bool IsRefusedAtOnce(BluetoothAddress address) {
    return Await([&] { return DurationOfRefusal(address) < 1900ms; });
}

void Open() {
    ASSERT_TRUE(Await([] { return OrvDevice_Connect(Address) == 0; }));
}
void Close() {
    OrvDevice_Disconnect(Address);
}
const std::uint8_t Block[3] = {1, 2, 3};

int CountMatchRules() {
    sd_bus* bus = nullptr;
    sd_bus_message* reply = nullptr;
    int rules = 0;
    sd_bus_open_system(&bus);
    if (sd_bus_call_method(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus.Debug.Stats", "GetAllMatchRules", nullptr, &reply,
                           "") >= 0) {
        sd_bus_message_enter_container(reply, 'a', "{sas}");
        while (sd_bus_message_enter_container(reply, 'e', "sas") > 0) {
            const char* text = nullptr;
            sd_bus_message_read(reply, "s", &text);
            sd_bus_message_enter_container(reply, 'a', "s");
            while (sd_bus_message_read(reply, "s", &text) > 0) {
                ++rules;
            }
            sd_bus_message_exit_container(reply);
            sd_bus_message_exit_container(reply);
        }
    }
    sd_bus_message_unref(reply);
    sd_bus_flush_close_unref(bus);
    return rules;
}

// ---- connecting

struct Oddity {
    const char* name;
    void (*arrange)(Behaviour&);
    const char* called = "AcquireNotify";
    const char* notCalled = "StartNotify";
};

const Oddity Oddities[] = {
    {"None", [](Behaviour&) {}},
    {"ConnectIsAbortedTwice", [](Behaviour& b) { b.abortsConnects = 2; }},
    {"ObjectsComeAfterResolved", [](Behaviour& b) { b.objectsLate = true; }},
    {"NoSocket", [](Behaviour& b) { b.acquireRefused = true; }, "StartNotify", "none"},
    {"SocketEndsAtOnce", [](Behaviour& b) { b.acquireEndsAtOnce = true; }, "StartNotify", "none"},
    {"IndicationsOnly", [](Behaviour& b) { b.indicatesOnly = true; }, "StartNotify",
     "AcquireNotify"},
    {"ForgottenAtTheConnect", [](Behaviour& b) { b.forgetsAtConnect = true; }},
    {"ForgottenTwice", [](Behaviour& b) { b.forgets = b.forgetsAtConnect = true; }},
    {"ForgottenWithTheScan", [](Behaviour& b) { b.forgets = true; }},
};

class ConnectTo : public DaemonTest, public testing::WithParamInterface<Oddity> {};

TEST_P(ConnectTo, SucceedsAndEndsWithTheLastUser) {
    // Arranges the oddity again for each connect, because some oddities occur only once.
    const auto arrange = [&] {
        daemon.Kill();
        daemon.Start();
        daemon.Arrange(GetParam().arrange);
        {
            const Scan scan;
            EXPECT_TRUE(scan.Hears(Address));
        }
        EXPECT_TRUE(Await([&] { return !daemon.IsScanning(); }));
    };
    ASSERT_EQ(Connect(arrange), 0);

    EXPECT_TRUE(Await([&] { return daemon.Calls(GetParam().called) > 0 && daemon.IsNotifying(); }));
    EXPECT_EQ(daemon.Calls(GetParam().notCalled), 0);
    ExpectEcho();
    const Bytes byItself = {9, 8};
    daemon.Notify(byItself);
    EXPECT_EQ(Receive(Address, 2), byItself);

    ASSERT_EQ(Connect(), 0) << "a second link to the same device";
    EXPECT_EQ(OrvDevice_Disconnect(Address), 0);
    EXPECT_TRUE(daemon.IsConnected() && daemon.IsNotifying()) << "the second link is still open";
    ExpectEcho();
    EXPECT_EQ(OrvDevice_Disconnect(Address), 0);
    EXPECT_TRUE(Await([&] { return !daemon.IsConnected() && !daemon.IsNotifying(); }));
}

INSTANTIATE_TEST_SUITE_P(Oddities, ConnectTo, testing::ValuesIn(Oddities),
                         [](const auto& row) { return std::string(row.param.name); });

// A fault that prevents a connect or ends a link. `set` causes the fault or repairs it.
struct Trouble {
    const char* name;
    void (*set)(StandIn&, bool isThere);
    bool atOnce = true;  // during the fault, a connect fails before its timeout
};

void SetBus(StandIn& d, bool runs, const char* limits = "") {
    if (runs) {
        privateBus->Start(limits);
        d.Start();
    } else {
        d.Kill();
        privateBus->Stop();
    }
}
const Trouble RadioOff = {"RadioOff", [](StandIn& d, bool isOff) { d.Power(!isOff); }};
const Trouble NoAdapter = {"NoAdapter", [](StandIn& d, bool isAway) { d.Unplug(isAway); }};
const Trouble NoDaemon = {"NoDaemon",
                          [](StandIn& d, bool isGone) { isGone ? d.Kill() : d.Start(); }};
const Trouble NoBus = {"NoBus", [](StandIn& d, bool isGone) { SetBus(d, !isGone); }};

const Trouble Refusals[] = {
    RadioOff,
    NoAdapter,
    NoDaemon,
    NoBus,
    {"HeardBeforeAndGone",
     [](StandIn& d, bool isGone) {
         d.ForgetDevice();
         d.Arrange([=](Behaviour& b) { b.advertises = !isGone; });
     }},
    {"ConnectRefused",
     [](StandIn& d, bool isRefused) {
         d.Arrange([=](Behaviour& b) { b.refusesConnect = isRefused ? "no" : ""; });
     }},
    {"NoService",
     [](StandIn& d, bool isMissing) {
         d.Arrange([=](Behaviour& b) { b.hasService = !isMissing; });
     }},
    {"NotificationsRefused",
     [](StandIn& d, bool areRefused) {
         d.Arrange([=](Behaviour& b) { b.acquireRefused = b.startRefused = areRefused; });
     }},
    {"OutOfRange",
     [](StandIn& d, bool hangs) { d.Arrange([=](Behaviour& b) { b.connectHangs = hangs; }); },
     false},
    {"NoPermission",
     [](StandIn& d, bool isDenied) {
         SetBus(d, false);
         SetBus(d, true,
                isDenied ? "<policy context='default'><deny send_destination='org.bluez'/></policy>"
                         : "");
     }},
    {"NoSignals",
     [](StandIn& d, bool isLimited) {
         SetBus(d, false);
         SetBus(d, true, isLimited ? "<limit name='max_match_rules_per_connection'>3</limit>" : "");
     }},
};

class ConnectRefused : public DaemonTest, public testing::WithParamInterface<Trouble> {};

TEST_P(ConnectRefused, LeavesNothingAndWorksAgain) {
    GetParam().set(daemon, true);

    EXPECT_TRUE(GetParam().atOnce ? IsRefusedAtOnce(Address)
                                  : DurationOfRefusal(Address) >= 1990ms);

    EXPECT_EQ(OrvDevice_Flush(Address), -1) << "a link was left in the table";
    EXPECT_TRUE(Await([&] { return !daemon.IsConnected() && !daemon.IsNotifying(); }));
    GetParam().set(daemon, false);
    {
        const Scan scan;
        EXPECT_TRUE(scan.Hears(Address));
        ExpectWorks();
    }
}

INSTANTIATE_TEST_SUITE_P(Refusals, ConnectRefused, testing::ValuesIn(Refusals),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(DaemonTest, AddressNeverHeardIsUnknownAtOnce) {
    EXPECT_TRUE(IsRefusedAtOnce(1));
}

TEST_F(DaemonTest, LeavesNothingAfterManyConnects) {
    const auto descriptors = [] {
        int count = 0;
        DIR* folder = opendir("/proc/self/fd");
        while (readdir(folder) != nullptr) {
            ++count;
        }
        closedir(folder);
        return count;
    };
    ExpectWorks();
    EXPECT_TRUE(Await([&] { return !daemon.IsConnected(); }));
    const int before = descriptors();
    const int rules = CountMatchRules();
    EXPECT_GE(rules, 3);
    const auto connectOften = [] {
        for (int i = 0; i < 100; ++i) {
            ASSERT_EQ(Connect(), 0) << i;
            ASSERT_EQ(OrvDevice_Disconnect(Address), 0) << i;
        }
    };
    const auto surplus = [&] { return daemon.Calls("Connect") - daemon.Calls("Disconnect"); };
    // Repeats this, because on a busy machine, the library opens or closes a slow link twice.
    EXPECT_TRUE(Await([&] {
        const int earlier = surplus();
        connectOften();
        EXPECT_TRUE(Await([&] { return !daemon.IsConnected() && descriptors() <= before; }));
        return HasFailure() || surplus() == earlier;
    })) << "a connect without a disconnect, or the reverse";
    EXPECT_EQ(CountMatchRules(), rules);
}

// ---- scanning

TEST_F(DaemonTest, SignalAloneKeepsNameAndValues) {
    const Scan scan;
    ASSERT_TRUE(Await([&] { return scan.Find(Address).value0500 == 42; }));
    daemon.AdvertiseSignalOnly(-33);
    EXPECT_TRUE(Await([&] { return scan.Find(Address).rssi == -33; }));
    EXPECT_STREQ(scan.Find(Address).name, "ORV-0042");
    EXPECT_EQ(scan.Find(Address).value0500, 42);
    daemon.Advertise("ORV-\xC3\xA4\xF0\x9F\x98\x80", {43}, -34);
    EXPECT_TRUE(Await([&] { return scan.Find(Address).value0500 == 43; }));
    EXPECT_STREQ(scan.Find(Address).name, "ORV-\xC3\xA4\xF0\x9F\x98\x80");
}

TEST_F(DaemonTest, WatchersShareAScanThatEndsWithTheLast) {
    // Repeats this, because the library starts a scan again if the start has no reply within 2 s.
    EXPECT_TRUE(Await([&] {
        EXPECT_TRUE(Await([&] { return !daemon.IsScanning(); }));
        const int starts = daemon.Calls("StartDiscovery");
        const int stops = daemon.Calls("StopDiscovery");
        auto first = std::make_unique<Scan>();
        const Scan second;
        EXPECT_TRUE(first->Hears(Address) && second.Hears(Address));
        first.reset();
        daemon.AdvertiseSignalOnly(-20);
        EXPECT_TRUE(Await([&] { return second.Find(Address).rssi == -20; }));
        return daemon.Calls("StartDiscovery") == starts + 1 &&
               daemon.Calls("StopDiscovery") == stops && daemon.IsScanning();
    })) << "the watchers do not share one scan";
    EXPECT_TRUE(Await([&] { return !daemon.IsScanning(); }));

    const std::int32_t id = OrvScanner_Initialize();
    OrvScanner_Start(id);
    EXPECT_TRUE(Await([&] { return daemon.IsScanning(); }));
    OrvScanner_Deinitialize(id);
    EXPECT_TRUE(Await([&] { return !daemon.IsScanning(); })) << "released without a stop";
}

TEST_F(DaemonTest, ScanGoesOnWhenRadioAndDaemonAreBack) {
    const Scan scan;
    ASSERT_TRUE(scan.Hears(Address));
    const auto heardAgain = [&](short signal) {
        return Await([&] { return daemon.IsScanning(); }) && Await([&] {
                   daemon.AdvertiseSignalOnly(signal);
                   return scan.Find(Address).rssi == signal;
               });
    };
    daemon.Power(false);
    EXPECT_TRUE(Await([] { return BluetoothAvailable() == -1; }));
    daemon.Power(true);
    EXPECT_TRUE(heardAgain(-10));
    daemon.Unplug(true);
    daemon.Unplug(false);
    EXPECT_TRUE(heardAgain(-11));
    daemon.Kill();
    EXPECT_TRUE(Await([] { return BluetoothAvailable() == -1; }));
    daemon.FailReply(1, /*silently=*/true);
    daemon.Start();
    EXPECT_TRUE(heardAgain(-12)) << "the daemon has not replied to the first call";
    SetBus(daemon, false);
    SetBus(daemon, true);
    EXPECT_TRUE(heardAgain(-13)) << "no call was made since the bus is back";
}

// If the kernel rejects a scan, the daemon replies as if this process were already scanning.
TEST_F(DaemonTest, ScanStartsWhenTheKernelAcceptsIt) {
    daemon.Arrange([](Behaviour& behaviour) { behaviour.rejectedScans = 2; });
    const Scan scan;
    EXPECT_TRUE(scan.Hears(Address));
}

// ---- end of a link

TEST_F(DaemonTest, DroppedLinkIsOpenedAgainByTheNextConnect) {
    const auto dropLink = [&] {
        CloseAll();
        ASSERT_EQ(Connect(), 0);
        daemon.DropLink();
        EXPECT_TRUE(Await([] { return OrvDevice_Send(Address, 1, Block) == -1; }));
        EXPECT_EQ(OrvDevice_Receive(Address, 0, nullptr), 0) << "the link stays until it is closed";
    };
    ASSERT_EQ(Connect(dropLink), 0);
    EXPECT_EQ(OrvDevice_Disconnect(Address), 0);
    ExpectEcho();
}

// Opening the notification socket ends the link. After two such losses, the library requests D-Bus
// signals instead.
TEST_F(DaemonTest, DeviceThatDropsTheLinkWithTheSocketGetsSignals) {
    daemon.Arrange([](Behaviour& b) { b.acquireDropsLink = true; });
    EXPECT_TRUE(Await([&] {
        Close();
        return OrvDevice_Connect(Address) == 0 && OrvDevice_Send(Address, 3, Block) == 3;
    }));
    EXPECT_EQ(Receive(Address, 3).size(), 3u);
    EXPECT_GE(daemon.Calls("StartNotify"), 1);
    ExpectEcho();
}

TEST_F(DaemonTest, BytesOfADroppedLinkAreStillReceived) {
    ASSERT_EQ(Connect(), 0);
    for (int i = 0; i < 100; ++i) {
        daemon.Notify(Bytes(i % 10 == 0 ? 0 : 100, 7));
    }
    daemon.DropLink();
    EXPECT_EQ(Receive(Address, 9000).size(), 9000u);
}

TEST_F(DaemonTest, WriteEndsByWhoRefusesIt) {
    ASSERT_EQ(Connect(), 0);
    ExpectEcho(Bytes(512));
    const std::size_t written = daemon.Written();
    const auto send = [](std::int32_t size) {
        return RepeatAfterTimeout([=] { return OrvDevice_Send(Address, size, Bytes(513).data()); });
    };
    EXPECT_EQ(send(513), 513) << "the device has answered";
    daemon.Arrange([](Behaviour& b) { b.writeFailure = "org.bluez.Error.NotPermitted"; });
    EXPECT_EQ(send(1), 1) << "the device has answered";
    daemon.Arrange([](Behaviour& b) { b.writeFailure = "org.bluez.Error.Failed"; });
    EXPECT_EQ(send(1), -1) << "nothing has reached the device";
    EXPECT_EQ(daemon.Written(), written);
}

class Values : public DaemonTest, public testing::WithParamInterface<bool> {};

// While a write waits, the library cannot store notified values, because of a lock. It must still
// read them: the daemon loses values if its socket (about 270 values) or the bus's queue is full.
TEST_P(Values, AreNotLostWhileAWriteHangs) {
    constexpr int MoreThanTheSocketHolds = 500;
    const bool bySocket = GetParam();
    daemon.Arrange([=](Behaviour& b) { b.acquireRefused = !bySocket; });
    ASSERT_EQ(Connect(), 0);
    std::atomic<bool> ends{false};
    std::atomic<int> sent{0};
    std::thread device([&] {
        while (!ends) {
            Bytes value(244);
            std::iota(value.begin(), value.end(), static_cast<std::uint8_t>(sent));
            sent += daemon.Notify(value);
            std::this_thread::sleep_for(microseconds(500));
        }
    });
    // Repeats the write, because a busy machine may send too few values during one write.
    EXPECT_TRUE(Await([&] {
        daemon.Arrange([](Behaviour& b) { b.silentWrites = 1; });
        const int before = sent;
        EXPECT_EQ(OrvDevice_Send(Address, 1, Block), -1);
        return sent - before >= MoreThanTheSocketHolds;
    }));
    ends = true;
    device.join();
    const std::size_t size = static_cast<std::size_t>(sent) * 244;
    const Bytes all = Receive(Address, size);
    ASSERT_EQ(all.size(), size);
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_EQ(all[i], static_cast<std::uint8_t>(i / 244 + i % 244));
    }
}

INSTANTIATE_TEST_SUITE_P(Ways, Values, testing::Bool(),
                         [](const auto& row) { return row.param ? "BySocket" : "BySignals"; });

// ---- faults during a wait

const Trouble Ends[] = {
    {"LinkDropped", [](StandIn& d, bool isThere) { isThere ? d.DropLink() : void(); }},
    RadioOff,
    NoAdapter,
    NoDaemon,
    NoBus,
};

class DuringAWait : public DaemonTest, public testing::WithParamInterface<Trouble> {};

// While the daemon does not answer a connect or a write, a fault occurs. Everything must work once
// the fault is repaired.
TEST_P(DuringAWait, ConnectAndSendFail) {
    const auto isCalled = [&](const char* member) {
        return Await([&] { return daemon.Calls(member) > 0; });
    };
    daemon.Arrange([](Behaviour& b) { b.connectHangs = true; });
    std::thread connect([] { EXPECT_EQ(OrvDevice_Connect(Address), -1); });
    EXPECT_TRUE(isCalled("Connect"));
    GetParam().set(daemon, true);
    connect.join();
    GetParam().set(daemon, false);
    daemon.Arrange([](Behaviour& b) {
        b.connectHangs = false;
        b.silentWrites = 1;
    });
    Open();
    std::thread send([] { EXPECT_EQ(OrvDevice_Send(Address, 3, Block), -1); });
    EXPECT_TRUE(isCalled("WriteValue"));
    GetParam().set(daemon, true);
    send.join();
    GetParam().set(daemon, false);
    const Scan scan;
    EXPECT_TRUE(scan.Hears(Address));
    Close();
    ExpectWorks();
    daemon.Notify({1});  // arrives while no link is open
    daemon.Advertise("ORV-0042", {1}, -60);
    ExpectWorks();
}

INSTANTIATE_TEST_SUITE_P(Ends, DuringAWait, testing::ValuesIn(Ends),
                         [](const auto& row) { return std::string(row.param.name); });

// ---- faults of the bus

struct Step {
    const char* name;
    int replies;  // minimum number of replies that the call needs
    void (*arrange)();
    ResultCode (*run)();
    ResultCode success;
    void (*undo)();
};

void Nothing() {}
void Prepare() {
    ASSERT_EQ(OrvScanner_Initialize(), 0);
}
void Begin() {
    Prepare();
    OrvScanner_Start(0);
    EXPECT_TRUE(Await([] { return OrvScanner_GetDeviceCount(0) > 0; }));
}
void Forget() {
    OrvScanner_Deinitialize(0);
}

// All exports that call the daemon.
const Step Steps[] = {
    {"BluetoothAvailable", 1, Nothing, BluetoothAvailable, 0, Nothing},
    {"Start", 3, Prepare, [] { return OrvScanner_Start(0); }, 0, Forget},
    {"Stop", 1, Begin, [] { return OrvScanner_Stop(0); }, 0, Forget},
    {"Deinitialize", 1, Begin, [] { return OrvScanner_Deinitialize(0); }, 0, Nothing},
    {"Connect", 3, Nothing, [] { return OrvDevice_Connect(Address); }, 0, Close},
    {"Disconnect", 1, Open, [] { return OrvDevice_Disconnect(Address); }, 0, Nothing},
    {"Send", 1, Open, [] { return OrvDevice_Send(Address, 3, Block); }, 3, Close},
};

class BusFaults : public DaemonTest, public testing::WithParamInterface<Step> {
  protected:
    // Runs the step while its n-th reply fails or is omitted. Returns false if the step has fewer
    // replies.
    bool Strike(int n, bool silently) {
        const Step& step = GetParam();
        // Restarts the daemon, so that the library has to load all objects again.
        daemon.Kill();
        daemon.Start();
        step.arrange();
        daemon.FailReply(n, silently);
        const ResultCode result = step.run();
        EXPECT_TRUE(result == step.success || result == -1) << result;
        const bool struck = Await([&] { return daemon.RepliesLeft() == 0; }, 1);
        daemon.FailReply(0, false);
        step.undo();
        ExpectWorks();
        EXPECT_TRUE(Await([&] { return !daemon.IsConnected() && !daemon.IsScanning(); }));
        return struck;
    }
};

TEST_P(BusFaults, EachReplyCanFailOrNeverCome) {
    for (const bool silently : {false, true}) {
        bool struck = true;
        for (int n = 1; struck && !HasFailure(); ++n) {
            SCOPED_TRACE((silently ? "no reply " : "failed reply ") + std::to_string(n));
            // Repeats the step if it needs the reply: on a busy machine, it can time out earlier.
            EXPECT_TRUE(Await([&] {
                struck = Strike(n, silently);
                return struck || n > GetParam().replies;
            }));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Exports, BusFaults, testing::ValuesIn(Steps),
                         [](const auto& row) { return std::string(row.param.name); });

// ---- lack of memory

struct Workload {
    const char* name;
    void (*arrange)(Behaviour&);
    int stride;
};

// One allocation fails in each round. To keep the test short, the later workloads, which differ
// from the first one in a few steps only, have a round for every fifth allocation.
const Workload Workloads[] = {
    {"ValuesBySocket", [](Behaviour&) {}, 1},
    {"ValuesBySignals", [](Behaviour& b) { b.acquireRefused = true; }, 5},
    {"ForgottenWithTheScan", [](Behaviour& b) { b.forgets = true; }, 5},
};

class LackOfMemory : public DaemonTest, public testing::WithParamInterface<Workload> {
  protected:
    // Uses each export that calls the daemon. Each call may succeed or fail, but what a successful
    // call promises must happen.
    void UseAll() {
        const std::int32_t id = OrvScanner_Initialize();
        if (OrvScanner_Start(id) == 0) {
            EXPECT_TRUE(Await([&] { return OrvScanner_GetDeviceCount(id) > 0; }));
        }
        OrvScanner_Stop(id);
        if (OrvDevice_Connect(Address) == 0) {
            if (OrvDevice_Send(Address, 3, Block) == 3) {
                std::uint8_t bytes[3];
                // The allocation for the received value may have failed.
                EXPECT_TRUE(Await([&] {
                    return OrvDevice_Receive(Address, 3, bytes) == 3 || HasAllocationFailed();
                }));
            }
            EXPECT_EQ(OrvDevice_Disconnect(Address), 0);
        }
        OrvScanner_Deinitialize(id);
        EXPECT_TRUE(Await([&] {
            return !daemon.IsConnected() && !daemon.IsScanning() && !daemon.IsNotifying();
        })) << "something was left at the daemon";
    }
};

// In each round, one allocation fails on the threads that the library has started.
TEST_P(LackOfMemory, FailsOnlyTheCallsThatMeetIt) {
    daemon.Arrange(GetParam().arrange);
    bool failed = true;
    int n = 1;
    for (; failed && !HasFailure(); n += GetParam().stride) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        daemon.Kill();  // so that the library has to load all objects again
        daemon.Start();
        FailAllocation(n);
        UseAll();
        failed = HasAllocationFailed();
        FailAllocation(0);
        const Scan scan;
        EXPECT_TRUE(scan.Hears(Address));
        ExpectWorks();
    }
    EXPECT_GT(n, 100) << "most allocations of a round were not counted";
    RecordProperty("allocations", n);
}

INSTANTIATE_TEST_SUITE_P(Workloads, LackOfMemory, testing::ValuesIn(Workloads),
                         [](const auto& row) { return std::string(row.param.name); });

// Fails allocations in the library's first call, which starts its threads. Runs before all tests,
// because no test can repeat the first call.
class FirstUse : public testing::Environment {
    void SetUp() override {
        bool failed = true;
        int n = 1;
        for (; failed; ++n) {
            FailAllocation(n, Threads::OfTest);
            const ResultCode result = BluetoothAvailable();
            failed = HasAllocationFailed(Threads::OfTest);
            FailAllocation(0, Threads::OfTest);
            EXPECT_EQ(result, -1) << "there is no daemon yet";
        }
        EXPECT_GT(n, 2);
    }
};

TEST_F(DaemonTest, HostOutlivesTheDaemonAtAnyMoment) {
    std::atomic<bool> ends{false};
    std::atomic<int> rounds{0};
    std::thread host([&] {
        std::uint8_t bytes[64];
        while (!ends) {
            const Scan scan;
            scan.Find(Address);
            if (OrvDevice_Connect(Address) == 0) {
                OrvDevice_Send(Address, 3, Block);
                OrvDevice_Receive(Address, 64, bytes);
                OrvDevice_Disconnect(Address);
            }
            ++rounds;
        }
    });
    std::mt19937 random = Random();
    for (int i = 0; i < 50; ++i) {
        std::this_thread::sleep_for(microseconds(random() % 20000));
        daemon.Kill();
        std::this_thread::sleep_for(microseconds(random() % 5000));
        daemon.Start();
    }
    const int before = rounds;
    EXPECT_TRUE(Await([&] { return rounds > before + 2; })) << "the host hangs";
    ends = true;
    host.join();
    ExpectWorks();
}

}  // namespace
}  // namespace orv::radio

int main(int argc, char** argv) {
    orv::radio::MarkTestThread();
    testing::InitGoogleTest(&argc, argv);
    orv::radio::PrivateBus bus;
    orv::radio::privateBus = &bus;
    bus.Start();
    testing::AddGlobalTestEnvironment(new orv::radio::FirstUse);
    return RUN_ALL_TESTS();
}
