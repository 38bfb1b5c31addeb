// Checks the library's results and log lines in each scenario, and the causes and notes that the
// log reader reports. Times are in milliseconds.
#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <thread>

#include "orv/log/infer/causes.h"
#include "orv/log/show/cause_texts.h"
#include "support/world.h"
#include "tests/orv/findings.h"

namespace orv {
namespace {

// Logs an observation of the test, such as a call's result.
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
    OrvWorld_Settle();  // Pass waits at most 1 s for notifications while a call waits
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
    Pass(3000);
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
    const char* named;  // cause or note that the log reader must report, or empty
    void (*host)();
    const char* lines;
};

#define A "176685338322165"
#define CONNECT "OrvDevice_Connect " A "\n"
#define RECEIVE "OrvDevice_Receive " A "\n"
#define HEARD "OnAdvertisementReceived " A
#define SHOWN "OrvScanner_GetDeviceInfo 0 0\n"
#define START "OrvScanner_Start 0\n= 0\n"

// In each scenario, scanner session 0 exists before the host's first call.
const Truth Truths[] = {
    {"unseen_since_boot", "unknownDevice", [] { Connect(), Start(), Pass(100), Connect(); },
     CONNECT "= -1\n" START HEARD " <ORV-0042> -60\n" HEARD " <> -60\n" CONNECT "= 0\n"},
    {"single_threaded_apartment", "",
     [] { Available(), Connect(), Send(5), Pass(100), Flush(), Disconnect(); },
     "BluetoothAvailable\n= 0\n" CONNECT "= 0\nOrvDevice_Send " A " 5\n= 5\nOnDataReceived " A
     " 5\nOrvDevice_Flush " A "\n= 5\nOrvDevice_Disconnect " A "\n= 0\n"},
    {"early_notifications", "droppedWhileConnecting", NotifiedDuringConnect,
     CONNECT "OnDataReceived " A " 5\n= 0 after 100 ms\n" RECEIVE "= 0 \nOnDataReceived " A
             " 5\n" RECEIVE "= 5 later\n"},
    {"close_hangs", "closingHangs", HangWhileOthersGoOn,
     CONNECT "= 0\nOrvDevice_Disconnect " A "\nBluetoothAvailable\n= 0\n" START SHOWN
             "= not listed\nOrvDevice_Flush " A "\n= released\nOrvDevice_Flush " A "\n= -1\n"},
    {"system_gives_up_late", "systemBusy", [] { Connect(), Connect(), Pass(3000), Connect(); },
     CONNECT "= -1 after 2000 ms\n" CONNECT "= -1 after 2000 ms\n" CONNECT "= 0\n"},
    {"name_in_scan_response", "namelessAdvertisements",
     [] { Start(), Pass(100), Show(), Pass(100), Show(); },
     START HEARD " <ORV-0042> -60\n" SHOWN "= <ORV-0042> -60\n" HEARD " <> -60\n" SHOWN
                 "= <> -60\n"},
    {"no_longer_heard", "noLongerHeard", [] { Start(), Pass(100), Show(), Pass(2000), Show(); },
     START HEARD " <ORV-0042> -60\n" SHOWN "= <ORV-0042> -60\n" HEARD " <ORV-0042> -127\n" SHOWN
                 "= <ORV-0042> -127\n"},
    {"radio_off_during_scan", "noRadioOn",
     [] {
         Start(), Pass(100), Pass(300), Available(), Start(), Pass(700), Show(), Available();
         Start(), Pass(100), Show();
     },
     START HEARD " <ORV-0042> -60\n" HEARD " <> -60\n" HEARD " <ORV-0042> -60\n" HEARD
                 " <> -60\nBluetoothAvailable\n= -1\n" START SHOWN
                 "= not listed\nBluetoothAvailable\n= 0\n" START HEARD " <ORV-0042> -60\n" HEARD
                 " <> -60\n" SHOWN "= <ORV-0042> -60\n"},
    {"held_by_another_program", "inUse", [] { Connect(), Pass(1000), Connect(); },
     CONNECT "= -1\n" CONNECT "= 0\n"},
    // The echo is off, because its log line could come before or after the write's result.
    {"write_too_large", "blocksUnanswered",
     [] {
         OrvWorld_SetEcho(Address, 0, 0);
         Connect(), Send(245), Arrived(), Send(244), Arrived(), Pass(1000), Flush();
     },
     CONNECT "= 0\nOrvDevice_Send " A " 245\n= 245\n= 0 arrived\nOrvDevice_Send " A
             " 244\n= 244\n= 1 arrived\nOrvDevice_Flush " A "\n= 0\n"},
    {"write_arrives_late", "unacknowledged", [] { Connect(), Send(5), Arrived(); },
     CONNECT "= 0\nOrvDevice_Send " A " 5\n= -1 after 2000 ms\n= 1 arrived\n"},
    {"vanishes", "limitPassed",
     [] { Connect(), Pass(600), Receive(), Send(5), Arrived(), Disconnect(), Connect(); },
     CONNECT "= 0\n" RECEIVE "= 0 \nOrvDevice_Send " A
             " 5\n= -1 after 2000 ms\n= 0 arrived\nOrvDevice_Disconnect " A
             "\n= 0 after 2000 ms\n" CONNECT "= -1 after 2000 ms\n"},
    {"two_links", "connectedTwice",
     [] {
         Connect(), Connect(), Pass(50), Receive(), Receive(), Disconnect(), Receive(),
             Disconnect(), Receive();
     },
     CONNECT "= 0\n" CONNECT "= 0\nOnDataReceived " A " 5\nOnDataReceived " A " 5\n" RECEIVE
             "= 5 hello\n" RECEIVE "= 0 \nOrvDevice_Disconnect " A "\n= 0\n" RECEIVE
             "= 5 hello\nOrvDevice_Disconnect " A "\n= 0\n" RECEIVE "= -1 \n"},
    {"cut_name", "namesCut", [] { Start(), Pass(100), Show(); },
     START HEARD " <ORV-Messgerät-Süd-Tür-Gerät> -60\n" SHOWN
                 "= <ORV-Messgerät-Süd-Tür-Ger\xC3> -60\n"},
};

// Returns the log of a host with result lines: replaces each line that Answer() logged by a result
// line.
std::string LogWithResults() {
    const std::string bytes = LogBytes();
    std::string log, call;
    for (std::string_view rest = bytes; !rest.empty();) {
        const std::size_t end = rest.find('\n') + 1;
        const std::string line(rest.substr(0, end));
        rest.remove_prefix(end);
        std::int32_t result = 0, ms = 0;
        const bool isResult =
            std::sscanf(line.c_str() + 12, "\t= %d after %d ms", &result, &ms) > 0;
        if (isResult && line.find("arrived") == line.npos) {
            log += line.substr(0, 13) + "Returned " + std::to_string(result) + " after " +
                   std::to_string(ms) + " ms: " + call;
        } else {
            log += line;
            const std::string text = line.substr(13);
            call = text.starts_with("Orv") || text.starts_with("Bluetooth") ? text : call;
        }
    }
    return log;
}

// The log reader must report `named`. If it finds only one cause for a call, this must be `named`,
// except for OrvDevice_Flush, which fails for one reason only.
void ExpectExplained(std::string_view named) {
    const log::Findings findings = log::FindAll(LogWithResults(), log::Threads::One);
    std::set<std::string_view> ids;
    for (const log::Call& call : findings.calls) {
        const log::Suspects suspects = HasSign(call) ? Explain(call) : log::Suspects{};
        for (const log::Suspect& suspect : suspects) {
            ids.insert(TextsOf(suspect.cause).id);
        }
        if (suspects.size() == 1 && call.subject.function != log::Function::Flush) {
            EXPECT_EQ(TextsOf(suspects[0].cause).id, named);
        }
    }
    for (const log::Note& note : findings.notes) {
        ids.insert(TextsOf(note.kind).id);
    }
    EXPECT_TRUE(named.empty() ? ids.empty() : ids.contains(named)) << testing::PrintToString(ids);
}

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

TEST_P(WindowsTruth, ResultsAndLogLinesMatch) {
    ASSERT_NO_FATAL_FAILURE(Play(GetParam().name));
    GetParam().host();
    std::string lines;
    for (const std::string& line : LogLines()) {
        lines += line + "\n";
    }
    EXPECT_EQ(lines, GetParam().lines);
    ExpectExplained(GetParam().named);
}

INSTANTIATE_TEST_SUITE_P(Scenarios, WindowsTruth, testing::ValuesIn(Truths), RowName);

TEST_F(ScenarioTest, flood) {
    ASSERT_NO_FATAL_FAILURE(Play("flood"));
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    Pass(1100);
    const Lines lines = LogLines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "OnDataReceived " A " 100"), 1000);
    EXPECT_EQ(OrvDevice_Flush(Address), 100000);
    ExpectExplained("bytesNotTaken");
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
    // The library logs names unchanged, so a device can forge a line.
    EXPECT_THAT(LogLines(), testing::Contains("forged> -60"));
    ExpectExplained("hostileNames");
}

}  // namespace
}  // namespace orv
