#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <set>

#include "support/world.h"

namespace orv {
namespace {

const std::string File = LibraryFile() + ".json";

std::string FaultOf(std::string_view text) {
    std::ofstream(File, std::ios::binary) << text;
    char error[300] = "";
    EXPECT_EQ(OrvWorld_PlayScenario(File.c_str(), 1, error, sizeof error), -1) << text;
    std::remove(File.c_str());
    return error;
}

struct Fault {
    std::string_view text;
    const char* fault;  // start of the error text after the file's name and a colon
};

#define D R"("address":"A0:B1:C2:D3:E4:F5")"
#define EVENT(text) R"({"title":"","devices":[{)" D "}],\n\"events\":[{" text "}]}"

const Fault Faults[] = {
    {"", "1: scenario: "},
    {"{\n\"title\":\"\",\n", "2: title: syntax error"},
    {"{\"title\":\n\n  1.5\n}", "3: title: 1.5 is no whole number"},
    {"{\"title\":\"\",\n\"title\":\"\"}", "2: title: stands here a second time"},
    {"[[[[[[[[[[[[[[[[[[[[", "1: [0][0]"},
    {"{\"title\":\"\xFF\"}", "1: title: "},
    {"{\"title\":\"\",\"radios\":123456789012345678901234567890}", "1: radios: is too large"},
    {std::string_view("{\"title\":\"\"}\n\0{}", 16), "2: scenario: has a byte of zero"},
    {"{}", "1: scenario: lacks title"},
    {"{\"title\":\"\",\n\"devcies\":[]}", "2: devcies: is unknown here, one of $schema, title"},
    {"{\"title\":7}", "1: title: is 7, a text would be right"},
    {"{\"title\":\"\",\"adapter\":null}", "1: adapter: is null, true or false would be right"},
    {"{\"title\":\"\",\"radios\":[{\"kind\":\"Bluetooth\",\n\"state\":\"off\"}]}",
     "2: radios[0].state: is \"off\", one of Unknown, On, Off, Disabled would be right"},
    {"{\"title\":\"\",\"devices\":[{\"address\":\"00:00:00:00:00:00\"}]}",
     "1: devices[0].address: is \"00:00:00:00:00:00\", an address"},
    {R"({"title":"","devices":[{)" D "},\n{" D "}]}", "2: devices[1].address: names a device"},
    {R"({"title":"","devices":[{)" D ",\n\"signal\":\n 40000\n}]}",
     "3: devices[0].signal: is 40000, a number from -32768 to 32767 would be right"},
    {R"({"title":"","devices":[{)" D R"(,"name":"a","nameUtf16":"0041"}]})",
     "1: devices[0].nameUtf16: stands beside name"},
    {R"({"title":"","devices":[{)" D
     R"(,"answers":[{"operation":"RequestAccess","status":"Success"}]}]})",
     "1: devices[0].answers[0].status: is \"Success\", one of Unspecified, Allowed"},
    {R"({"title":"","faults":[{"member":"GattDeviceService.close","hang":true}]})",
     "1: faults[0].member: is \"GattDeviceService.close\", which no simulated class has"},
    {R"({"title":"","faults":[{"member":"Radio.get_Kind"}]})", "1: faults[0]: lacks a field"},
    {EVENT(R"("at":1,"device":"A0:B1:C2:D3:E4:F6","present":true)"),
     "2: events[0].device: names no device of this scenario"},
    {EVENT(R"("device":"A0:B1:C2:D3:E4:F5","present":true)"),
     "2: events[0]: lacks a field, one of at, after"},
    {EVENT(R"("at":1,"after":1,"device":"A0:B1:C2:D3:E4:F5","present":true)"),
     "2: events[0]: has both at and after"},
    {EVENT(R"("at":1,"device":"A0:B1:C2:D3:E4:F5","notify":"abc")"),
     "2: events[0].notify: is \"abc\", two hexadecimal digits"},
    {EVENT(R"("at":1,"device":"A0:B1:C2:D3:E4:F5","notify":"","signal":-1)"),
     "2: events[0].signal: is unknown here"},
    {EVENT(R"("at":1,"times":2,"adapter":true)"), "2: events[0]: has times without every"},
    {EVENT(R"("at":1,"radio":1,"state":"On")"), "2: events[0].radio: is 1, a number from 0 to 0"},
};

class ScenarioFileTest : public WorldTest {};

TEST_F(ScenarioFileTest, AFaultNamesLineAndFieldAndChangesNothing) {
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    for (const Fault& row : Faults) {
        EXPECT_THAT(FaultOf(row.text), testing::StartsWith(File + ":" + row.fault));
    }
    EXPECT_EQ(OrvWorld_OpenObjects(Address), 2);
    char error[6] = "";
    EXPECT_EQ(OrvWorld_PlayScenario("there is none", 1, error, sizeof error), -1);
    EXPECT_STREQ(error, "there");
    EXPECT_EQ(OrvWorld_PlayScenario(nullptr, 1, nullptr, 0), -1);
}

TEST_F(ScenarioFileTest, FunctionsDoTheSameAsFields) {
    OrvWorld_ForgetDevice(Address);
    EXPECT_EQ(OrvDevice_Connect(Address), -1);
    OrvWorld_KnowDevice(Address);
    EXPECT_EQ(OrvDevice_Connect(Address), 0);
    OrvWorld_KnowOnceHeard(Address);
    EXPECT_EQ(OrvDevice_Connect(Address), -1);
    const ResultCode scanner = OrvScanner_Initialize();
    OrvScanner_Start(scanner);
    Advertise(Address);
    EXPECT_EQ(OrvDevice_Connect(Address), 0);
    OrvWorld_SwitchRadio(0, OrvRadioState_Off);
    EXPECT_EQ(OrvWorld_Advertise(Address, OrvPacket_Advertisement, -1), 0);
    OrvWorld_SwitchRadio(0, OrvRadioState_On);
    EXPECT_EQ(OrvWorld_Advertise(Address, OrvPacket_Advertisement, -1), 0);
    OrvScanner_Start(scanner);
    EXPECT_EQ(OrvWorld_Advertise(Address, OrvPacket_Advertisement, -1), 1);

    OrvWorld_SetLargestWrite(Address, 3);
    OrvDevice_Send(Address, 4, Sequence(4).data());
    EXPECT_EQ(OrvWorld_WriteCount(Address), 0);
    OrvWorld_SetLargestWrite(Address, -1);
    OrvWorld_SetOneAtATime(Address, 1);
    OrvWorld_Answer(Address, OrvOperation_WriteValue, OrvAnswer_After, 1500);
    EXPECT_EQ(OrvDevice_Send(Address, 4, Sequence(4).data()), 4);
    OrvWorld_Answer(Address, OrvOperation_WriteValue, OrvAnswer_After, 3000);
    EXPECT_EQ(OrvDevice_Send(Address, 4, Sequence(4).data()), -1);
    OrvWorld_Answer(Address, OrvOperation_WriteValue, OrvAnswer_Standard, 0);
    const std::int64_t start = OrvWorld_Now();
    EXPECT_EQ(OrvDevice_Send(Address, 1, Sequence(1).data()), 1);
    EXPECT_EQ(OrvWorld_Now() - start, 1000);
    OrvWorld_SetPresent(Address, 0);
    EXPECT_EQ(OrvDevice_Connect(Address), -1);

    for (const std::int32_t refused :
         {OrvWorld_SetPresent(1, 0), OrvWorld_KnowOnceHeard(1), OrvWorld_KnowDevice(1),
          OrvWorld_SetOneAtATime(1, 1), OrvWorld_SetSignalSpread(1, 0),
          OrvWorld_SetSignalSpread(Address, -1), OrvWorld_SetSignalSpread(Address, 101),
          OrvWorld_SetLargestWrite(1, 1), OrvWorld_SetLargestWrite(Address, -2),
          OrvWorld_SwitchRadio(1, OrvRadioState_On)}) {
        EXPECT_EQ(refused, -1);
    }
    EXPECT_STREQ(OrvWorld_Version(), QUELVIXWINLIB_VERSION);
}

// The number of values is limited, because even a value of one character needs memory.
TEST_F(ScenarioFileTest, TooManyValuesAreRefused) {
    std::string zeros = "{\"events\":[";
    for (int i = 0; i < 2'000'000; ++i) {
        zeros += "0,";
    }
    EXPECT_THAT(FaultOf(zeros + "0]}"), testing::HasSubstr("events[1999998]: has too many values"));
}

TEST_F(ScenarioFileTest, FieldsDoTheSameAsFunctions) {
    std::ofstream(File, std::ios::binary)
        << R"({"title":"","failWaits":{"count":1,"code":"0x80004005"},
        "devices":[{)" D R"(,"name":"ORV-1","known":false,"signal":-60,"signalSpread":30}],
        "events":[{"at":1,)"
           R"("device":"A0:B1:C2:D3:E4:F5","known":"OnceHeard"}]})";
    ASSERT_EQ(OrvWorld_PlayScenario(File.c_str(), 1, nullptr, 0), 0);
    std::remove(File.c_str());
    EXPECT_EQ(BluetoothAvailable(), -1) << "the wait could be set up";
    EXPECT_EQ(BluetoothAvailable(), 0);
    const ResultCode scanner = OrvScanner_Initialize();
    OrvScanner_Start(scanner);
    OrvWorld_PassTime(1);
    EXPECT_EQ(OrvDevice_Connect(Address), -1) << "known before it was heard";
    std::set<std::int32_t> signals;
    for (int i = 0; i < 20; ++i) {
        DiscoveredDevice device{};
        Advertise(Address);
        ASSERT_EQ(OrvScanner_GetDeviceInfo(scanner, 0, &device), 0);
        signals.insert(device.rssi);
    }
    EXPECT_GT(signals.size(), 10U);
    EXPECT_GE(*signals.begin(), -90);
    EXPECT_LE(*signals.rbegin(), -30);
    EXPECT_EQ(OrvDevice_Connect(Address), 0);
}

// What a host observes: the first packets and the record of each device, and the results of calls.
struct View {
    std::map<std::string, Lines> heard;
    Lines records;
    Lines links;
};

View LookAround() {
    View view;
    Logging_Enable();
    view.links.push_back("available " + std::to_string(BluetoothAvailable()));
    const ResultCode scanner = OrvScanner_Initialize();
    OrvScanner_Start(scanner);
    // Waits until both packets of each device have arrived.
    for (const char* response :
         {"176685338322165 <> ", "176685338322166 <> ", "18838586676582 <> "}) {
        EXPECT_TRUE(AwaitLog(response)) << response;
    }
    OrvScanner_Stop(scanner);
    OrvWorld_Settle();
    for (const std::string& line : LogLines()) {
        Lines& lines = view.heard[line.substr(0, line.find(" <"))];
        if (line.find(" <") != std::string::npos && lines.size() < 2) {
            lines.push_back(line);
        }
    }
    DiscoveredDevice device{};
    for (std::int32_t i = 0; OrvScanner_GetDeviceInfo(scanner, i, &device) == 0; ++i) {
        device.rssi = 0;
        view.records.emplace_back(reinterpret_cast<const char*>(&device), sizeof device);
    }
    for (const BluetoothAddress address : {Address, Address + 1, OtherAddress}) {
        for (const ResultCode result :
             {OrvDevice_Connect(address), OrvDevice_Send(address, 300, Sequence(300).data()),
              OrvDevice_Disconnect(address)}) {
            view.links.push_back(std::to_string(result));
        }
    }
    OrvScanner_Deinitialize(scanner);
    return view;
}

TEST_F(ScenarioFileTest, TheDefaultWorldIsTheOneOfItsFile) {
    OrvWorld_Default();
    const View built = LookAround();
    char outside = 'x';  // behind a buffer of 0 bytes
    ASSERT_EQ(OrvWorld_PlayScenario(ORV_SCENARIOS "default.json", 0, &outside, 0), 0);
    EXPECT_EQ(outside, 'x');
    const View played = LookAround();
    EXPECT_EQ(built.records.size(), 2U);
    EXPECT_EQ(built.heard, played.heard);
    EXPECT_EQ(built.records, played.records);
    EXPECT_EQ(built.links, played.links);
}

}  // namespace
}  // namespace orv
