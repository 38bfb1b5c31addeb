// What the library answers and logs in each scenario, to the millisecond.
#include <gmock/gmock.h>

#include <algorithm>
#include <thread>

#include "support/world.h"

namespace orv {
namespace {

// The result of a call stands in the log behind the lines of the call.
void Say(std::string text) {
    text.insert(0, "= ");
    Logging_AppendLine(text.data(), static_cast<std::int32_t>(text.size()));
}

template <typename Call>
void Answer(Call&& call) {
    const std::int64_t start = OrvWorld_Now();
    const ResultCode result = call();
    const std::int64_t took = OrvWorld_Now() - start;
    Say(std::to_string(result) + (took == 0 ? "" : " after " + std::to_string(took) + " ms"));
}

void Available() {
    Answer(BluetoothAvailable);
}
void Connect() {
    Answer([] { return OrvDevice_Connect(Address); });
}
void Disconnect() {
    Answer([] { return OrvDevice_Disconnect(Address); });
}
void Flush() {
    Answer([] { return OrvDevice_Flush(Address); });
}
void Send(std::size_t length) {
    Answer([&] {
        return OrvDevice_Send(Address, static_cast<std::int32_t>(length), Sequence(length).data());
    });
}
void Arrived() {
    Say(std::to_string(OrvWorld_WriteCount(Address)) + " arrived");
}
void Receive() {
    std::string bytes(100, '\0');
    const ResultCode count =
        OrvDevice_Receive(Address, 100, reinterpret_cast<std::uint8_t*>(bytes.data()));
    Say(std::to_string(count) + " " +
        bytes.substr(0, static_cast<std::size_t>(std::max<ResultCode>(count, 0))));
}
void Pass(std::int32_t ms) {
    OrvWorld_PassTime(ms);
}
void Start() {
    Answer([] { return OrvScanner_Start(0); });
}
// The first listed device, as the record shows it.
void Show(std::int32_t index = 0) {
    DiscoveredDevice device{};
    if (OrvScanner_GetDeviceInfo(0, index, &device) != 0) {
        Say("not listed");
        return;
    }
    Say("<" + std::string(device.name) + "> " + std::to_string(device.rssi));
}

void NotifiedDuringConnect() {
    OrvWorld_HoldTime();
    std::thread host(Connect);
    OrvWorld_AwaitCalls(WriteDescriptor, 1);
    OrvWorld_AwaitWaits(1);
    Pass(50);
    OrvWorld_ReleaseTime();
    host.join();
    Receive();
    Pass(100);
    Receive();
}

void HangWhileOthersGoOn() {
    Connect();
    std::thread host([] { OrvDevice_Disconnect(Address); });
    OrvWorld_AwaitCalls(CloseService, 1);
    Available();
    Start();
    OrvWorld_Settle();
    Show();
    std::thread waiting([] { OrvDevice_Flush(Address); });
    EXPECT_TRUE(AwaitLog("OrvDevice_Flush")) << "a call was kept out of the log";
    Say("released");
    OrvWorld_Release(CloseService);
    host.join();
    waiting.join();
    Flush();
}

struct Truth {
    const char* name;
    void (*host)();
    const char* lines;
};

#define A "176685338322165"
#define CONNECT "OrvDevice_Connect " A "\n"
#define RECEIVE "OrvDevice_Receive " A "\n"
#define HEARD "OnAdvertisementReceived " A
#define SHOWN "OrvScanner_GetDeviceInfo 0 0\n"
#define START "OrvScanner_Start 0\n= 0\n"

// In each, scanner session 0 exists.
const Truth Truths[] = {
    {"unseen_since_boot", [] { Connect(), Start(), Pass(100), Connect(); },
     CONNECT "= -1\n" START HEARD " <ORV-0042> -60\n" HEARD " <> -60\n" CONNECT "= 0\n"},
    {"single_threaded_apartment",
     [] { Available(), Connect(), Send(5), Pass(100), Flush(), Disconnect(); },
     "BluetoothAvailable\n= 0\n" CONNECT "= 0\nOrvDevice_Send " A " 5\n= 5\nOnDataReceived " A
     " 5\nOrvDevice_Flush " A "\n= 5\nOrvDevice_Disconnect " A "\n= 0\n"},
    {"early_notifications", NotifiedDuringConnect,
     CONNECT "OnDataReceived " A " 5\n= 0 after 100 ms\n" RECEIVE "= 0 \nOnDataReceived " A
             " 5\n" RECEIVE "= 5 later\n"},
    {"close_hangs", HangWhileOthersGoOn,
     CONNECT "= 0\nOrvDevice_Disconnect " A "\nBluetoothAvailable\n= 0\n" START SHOWN
             "= not listed\nOrvDevice_Flush " A "\n= released\nOrvDevice_Flush " A "\n= -1\n"},
    {"system_gives_up_late", [] { Connect(), Connect(), Pass(3000), Connect(); },
     CONNECT "= -1 after 2000 ms\n" CONNECT "= -1 after 2000 ms\n" CONNECT "= 0\n"},
    {"name_in_scan_response", [] { Start(), Pass(100), Show(), Pass(100), Show(); },
     START HEARD " <ORV-0042> -60\n" SHOWN "= <ORV-0042> -60\n" HEARD " <> -60\n" SHOWN
                 "= <> -60\n"},
    {"no_longer_heard", [] { Start(), Pass(100), Show(), Pass(2000), Show(); },
     START HEARD " <ORV-0042> -60\n" SHOWN "= <ORV-0042> -60\n" HEARD " <ORV-0042> -127\n" SHOWN
                 "= <ORV-0042> -127\n"},
    {"radio_off_during_scan",
     [] {
         Start(), Pass(100), Pass(300), Available(), Start(), Pass(700), Show(), Available();
         Start(), Pass(100), Show();
     },
     START HEARD " <ORV-0042> -60\n" HEARD " <> -60\n" HEARD " <ORV-0042> -60\n" HEARD
                 " <> -60\nBluetoothAvailable\n= -1\n" START SHOWN
                 "= not listed\nBluetoothAvailable\n= 0\n" START HEARD " <ORV-0042> -60\n" HEARD
                 " <> -60\n" SHOWN "= <ORV-0042> -60\n"},
    {"held_by_another_program", [] { Connect(), Pass(1000), Connect(); },
     CONNECT "= -1\n" CONNECT "= 0\n"},
    {"write_too_large", [] { Connect(), Send(245), Arrived(), Send(244), Arrived(); },
     CONNECT "= 0\nOrvDevice_Send " A " 245\n= 245\n= 0 arrived\nOrvDevice_Send " A
             " 244\n= 244\n= 1 arrived\n"},
    {"write_arrives_late", [] { Connect(), Send(5), Arrived(); },
     CONNECT "= 0\nOrvDevice_Send " A " 5\n= -1 after 2000 ms\n= 1 arrived\n"},
    {"vanishes",
     [] { Connect(), Pass(600), Receive(), Send(5), Arrived(), Disconnect(), Connect(); },
     CONNECT "= 0\n" RECEIVE "= 0 \nOrvDevice_Send " A
             " 5\n= -1 after 2000 ms\n= 0 arrived\nOrvDevice_Disconnect " A
             "\n= 0 after 2000 ms\n" CONNECT "= -1 after 2000 ms\n"},
    {"two_links",
     [] {
         Connect(), Connect(), Pass(50), Receive(), Receive(), Disconnect(), Receive(),
             Disconnect(), Receive();
     },
     CONNECT "= 0\n" CONNECT "= 0\nOnDataReceived " A " 5\nOnDataReceived " A " 5\n" RECEIVE
             "= 5 hello\n" RECEIVE "= 0 \nOrvDevice_Disconnect " A "\n= 0\n" RECEIVE
             "= 5 hello\nOrvDevice_Disconnect " A "\n= 0\n" RECEIVE "= -1 \n"},
    {"cut_name", [] { Start(), Pass(100), Show(); },
     START HEARD " <ORV-Messgerät-Süd-Tür-Gerät> -60\n" SHOWN
                 "= <ORV-Messgerät-Süd-Tür-Ger\xC3> -60\n"},
};

class ScenarioTest : public WorldTest {
  protected:
    void Play(const std::string& name) {
        char error[300] = "";
        ASSERT_EQ(
            OrvWorld_PlayScenario((ORV_SCENARIOS + name + ".json").c_str(), 1, error, sizeof error),
            0)
            << error;
        ASSERT_EQ(OrvScanner_Initialize(), 0);
        Logging_Enable();
    }
};

class WindowsTruth : public ScenarioTest, public testing::WithParamInterface<Truth> {};

TEST_P(WindowsTruth, AnswersAndLines) {
    ASSERT_NO_FATAL_FAILURE(Play(GetParam().name));
    GetParam().host();
    std::string lines;
    for (const std::string& line : LogLines()) {
        lines += line + "\n";
    }
    EXPECT_EQ(lines, GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, WindowsTruth, testing::ValuesIn(Truths), RowName);

TEST_F(ScenarioTest, flood) {
    ASSERT_NO_FATAL_FAILURE(Play("flood"));
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    Pass(1100);
    const Lines lines = LogLines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "OnDataReceived " A " 100"), 1000);
    EXPECT_EQ(OrvDevice_Flush(Address), 100000);
}

TEST_F(ScenarioTest, hostile_names) {
    ASSERT_NO_FATAL_FAILURE(Play("hostile_names"));
    const std::string names[] = {"ORV\x1b[2J\x1b[31m", "ORV\n10:00:00.000\tforged",
                                 std::string("ORV\0hidden", 10), "ORV\u202Egnp.exe",
                                 "ORV\xEF\xBF\xBD"};
    OrvScanner_Start(0);
    std::int32_t index = 0;
    for (const std::string& name : names) {
        Pass(100);
        DiscoveredDevice device{};
        EXPECT_EQ(OrvScanner_GetDeviceInfo(0, index++, &device), 0);
        EXPECT_EQ(std::string(device.name, name.size() + 1), name + '\0');
    }
    // The log holds what the device sent: a line of it can be forged.
    EXPECT_THAT(LogLines(), testing::Contains("forged> -60"));
}

}  // namespace
}  // namespace orv
