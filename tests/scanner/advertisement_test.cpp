// What the scanner makes of what it hears: which devices are listed, and what their records hold.
#include <climits>
#include <cstring>
#include <string>

#include "support/world.h"

namespace orv {
namespace {

constexpr std::int32_t Plain = OrvPacket_Advertisement;
constexpr std::int32_t Response = OrvPacket_ScanResponse;
constexpr std::uint64_t Heard = 0x1234;

void SetName(std::int32_t packet, const std::u16string& name) {
    OrvWorld_SetName(Heard, packet, reinterpret_cast<const std::uint16_t*>(name.data()),
                     static_cast<std::int32_t>(name.size()));
}

void AddSection(std::int32_t packet, const Bytes& data, std::int32_t type = 0x16) {
    OrvWorld_AddSection(Heard, packet, type, data.data(), static_cast<std::int32_t>(data.size()));
}

// A record as it must lie in the host's memory, all 64 bytes of it.
DiscoveredDevice Record(const std::string& name, std::int16_t rssi = -60,
                        std::uint8_t value0500 = 0xFF) {
    DiscoveredDevice record;
    std::memset(&record, 0, sizeof record);
    record.address = Heard;
    std::memcpy(record.name, name.data(), name.size());
    record.rssi = rssi;
    record.value0500 = value0500;
    record.value1130 = 0xFF;
    return record;
}

Bytes Raw(const DiscoveredDevice& record) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&record);
    return {bytes, bytes + sizeof record};
}

Lines Hear(std::int32_t packet) {
    return LinesOf([packet] { Advertise(Heard, packet); });
}

// Session 0 scans; one device is there and named ORV-1 in its advertisement.
class HearingTest : public WorldTest {
  protected:
    void SetUp() override {
        WorldTest::SetUp();
        AddDevice(Heard, "ORV-1");
        ASSERT_EQ(OrvScanner_Initialize(), 0);
        ASSERT_EQ(OrvScanner_Start(0), 0);
    }

    static void ExpectRecord(const DiscoveredDevice& expected, std::int32_t index = 0) {
        DiscoveredDevice info;
        std::memset(&info, 0xEE, sizeof info);
        EXPECT_EQ(OrvScanner_GetDeviceInfo(0, index, &info), 0);
        EXPECT_EQ(Raw(info), Raw(expected)) << info.name;
    }
};

std::string TraceOf(const std::string& name, const std::string& signal = "-60") {
    return "OnAdvertisementReceived 4660 <" + name + "> " + signal;
}

const std::string A20(20, 'a');
const std::u16string A20Wide(20, u'a');

struct Name {
    const char* name;
    std::u16string heard;
    std::string traced;  // as UTF-8
    bool listed = true;
    std::string stored = traced;
};

const Name Names[] = {
    {"PrefixAlone", u"ORV", "ORV"},
    {"Serial", u"ORV-0042", "ORV-0042"},
    {"TooShort", u"OR", "OR", false},
    {"LowerCase", u"orv-7", "orv-7", false},
    {"MixedCase", u"ORv-7", "ORv-7", false},
    {"PrefixInside", u"XORV", "XORV", false},
    {"EmptyName", u"", "", false},
    {"WidePrefix", u"\uFF2F\uFF32\uFF36", "\xEF\xBC\xAF\xEF\xBC\xB2\xEF\xBC\xB6", false},
    {"Bytes29", u"ORV-12345" + A20Wide, "ORV-12345" + A20},
    {"Bytes30", u"ORV-123456" + A20Wide, "ORV-123456" + A20, true, "ORV-123456" + A20.substr(1)},
    {"Bytes40", u"ORV" + A20Wide + u"12345678901234567", "ORV" + A20 + "12345678901234567", true,
     "ORV" + A20 + "123456"},
    {"TwoByteCharacter", u"ORV\u00E9", "ORV\xC3\xA9"},
    {"TwoByteCharacterCut", u"ORV12345" + A20Wide + u"\u00E9", "ORV12345" + A20 + "\xC3\xA9", true,
     "ORV12345" + A20 + "\xC3"},
    {"FourByteCharacter", u"ORV\U0001F600", "ORV\xF0\x9F\x98\x80"},
    {"FourByteCharacterCut", u"ORV123" + A20Wide + u"\U0001F600",
     "ORV123" + A20 + "\xF0\x9F\x98\x80", true, "ORV123" + A20 + "\xF0\x9F\x98"},
    {"LargestCharacter", u"ORV\U0010FFFF\uFFFF\u07FF\u0800",
     "ORV\xF4\x8F\xBF\xBF\xEF\xBF\xBF\xDF\xBF\xE0\xA0\x80"},
    {"HighSurrogateAlone", {u'O', u'R', u'V', 0xD83D, u'x'}, "ORV\xEF\xBF\xBDx"},
    {"HighSurrogateAtTheEnd", {u'O', u'R', u'V', 0xDBFF}, "ORV\xEF\xBF\xBD"},
    {"LowSurrogateAlone", {u'O', u'R', u'V', 0xDC00, u'x'}, "ORV\xEF\xBF\xBDx"},
    {"SurrogatesSwapped", {u'O', u'R', u'V', 0xDE00, 0xD83D}, "ORV\xEF\xBF\xBD\xEF\xBF\xBD"},
    {"TwoHighSurrogates",
     {u'O', u'R', u'V', 0xD83D, 0xD83D, 0xDE00},
     "ORV\xEF\xBF\xBD\xF0\x9F\x98\x80"},
    {"ZeroInside", {u'O', u'R', u'V', 0, u'x'}, std::string("ORV\0x", 5)},
    {"LineFeed", u"ORV\n\tx", "ORV\r\n\tx", true, "ORV\n\tx"},
};

class HeardName : public HearingTest, public testing::WithParamInterface<Name> {};

TEST_P(HeardName, IsTracedAndDecidesWhatIsListed) {
    const Name& row = GetParam();
    for (const std::int32_t packet : {Plain, Response}) {
        ASSERT_EQ(OrvScanner_Start(0), 0);
        SetName(packet, row.heard);
        EXPECT_EQ(Hear(packet), Lines{TraceOf(row.traced)});
        ASSERT_EQ(OrvScanner_GetDeviceCount(0), row.listed ? 1 : 0);
        if (row.listed) {
            ExpectRecord(Record(row.stored));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Names, HeardName, testing::ValuesIn(Names), RowName);

// What a listed device's record holds after one more packet; values untouched.
struct Renaming {
    const char* name;
    std::int32_t packet;
    const char16_t* heard;  // null: no name
    const char* traced;
    const char* stored;
};

const Renaming Renamings[] = {
    {"Shorter", Plain, u"ORV", "ORV", "ORV"},
    {"ForeignNameStays", Plain, u"Lamp", "Lamp", "Lamp"},
    {"NoName", Plain, nullptr, "", ""},
    {"ResponseWithoutName", Response, nullptr, "", "ORV-1"},
    {"ResponseWithName", Response, u"ORV-2", "ORV-2", "ORV-1"},
};

class ListedDevice : public HearingTest, public testing::WithParamInterface<Renaming> {};

TEST_P(ListedDevice, FollowsSignalAndName) {
    const Renaming& row = GetParam();
    Advertise(Heard);
    for (const std::int16_t signal : {std::int16_t{-128}, std::int16_t{127}}) {
        OrvWorld_SetSignal(Heard, signal);
        OrvWorld_SetName(Heard, row.packet, nullptr, -1);
        if (row.heard != nullptr) {
            SetName(row.packet, row.heard);
        }
        EXPECT_EQ(Hear(row.packet), Lines{TraceOf(row.traced, std::to_string(signal))});
        EXPECT_EQ(OrvScanner_GetDeviceCount(0), 1);
        ExpectRecord(Record(row.stored, signal));
    }
}

INSTANTIATE_TEST_SUITE_P(Packets, ListedDevice, testing::ValuesIn(Renamings), RowName);

Bytes Key1118(std::size_t count, std::size_t first = 1) {
    Bytes payload = Sequence(count, first);
    payload.insert(payload.begin(), {0x18, 0x11});
    return payload;
}

struct Sections {
    const char* name;
    std::vector<Bytes> payloads;
    std::uint8_t value0500 = 0xFF;
    std::uint8_t value1130 = 0xFF;
    Bytes data1118 = {};
};

const Sections SectionRows[] = {
    {"None", {}},
    {"Values", {{0x00, 0x05, 0x2A}, {0x30, 0x11, 0x07}}, 0x2A, 0x07},
    {"Data", {Key1118(3)}, 0xFF, 0xFF, Sequence(3, 1)},
    {"Data1", {Key1118(1)}, 0xFF, 0xFF, Sequence(1, 1)},
    {"Data16", {Key1118(16)}, 0xFF, 0xFF, Sequence(16, 1)},
    {"Data18Cut", {Key1118(18)}, 0xFF, 0xFF, Sequence(16, 1)},
    {"TooShort", {{}, {0x00}, {0x00, 0x05}, {0x30, 0x11}, {0x18, 0x11}}},
    {"ShortAfterData", {Key1118(3), {0x18, 0x11}}, 0xFF, 0xFF, Sequence(3, 1)},
    {"OnlyTheThirdByte", {{0x00, 0x05, 0x01, 0x02}, {0x30, 0x11, 0x03, 0x04}}, 0x01, 0x03},
    {"LaterWins", {{0x00, 0x05, 1}, {0x30, 0x11, 2}, {0x00, 0x05, 0}, {0x30, 0x11, 0}}, 0, 0},
    {"LaterDataClearsLonger", {Key1118(16), Key1118(2, 9)}, 0xFF, 0xFF, {9, 10}},
    {"AmongOthers", {{0xFF, 0xFF, 1}, {0x00, 0x05, 1}, {0x05, 0x00, 2}, Key1118(1)}, 1, 0xFF, {1}},
    {"SwappedKeys", {{0x05, 0x00, 1}, {0x11, 0x30, 2}, {0x11, 0x18, 3}}},
};

class ScanResponse : public HearingTest, public testing::WithParamInterface<Sections> {};

TEST_P(ScanResponse, BringsTheValues) {
    const Sections& row = GetParam();
    std::int32_t type = 0xFA;  // counts on from section to section: types are not looked at
    for (const Bytes& payload : row.payloads) {
        for (const std::int32_t packet : {Plain, Response}) {
            AddSection(packet, payload, type & 0xFF);
        }
        ++type;
    }
    SetName(Response, u"ORV-1");
    Advertise(Heard, Response);
    ExpectRecord(Record("ORV-1"));  // the first packet's sections are not read, whichever it is
    Advertise(Heard, Plain);
    ExpectRecord(Record("ORV-1"));  // nor any advertisement's

    DiscoveredDevice expected = Record("ORV-1", -60, row.value0500);
    expected.value1130 = row.value1130;
    std::copy(row.data1118.begin(), row.data1118.end(), expected.data1118);
    Advertise(Heard, Response);
    ExpectRecord(expected);

    // A response without sections changes nothing, nor does stopping; starting forgets.
    OrvWorld_ClearSections(Heard, Response);
    Advertise(Heard, Response);
    OrvScanner_Stop(0);
    ExpectRecord(expected);
    OrvScanner_Start(0);
    Advertise(Heard);
    ExpectRecord(Record("ORV-1"));
}

INSTANTIATE_TEST_SUITE_P(Sections, ScanResponse, testing::ValuesIn(SectionRows), RowName);

TEST_F(HearingTest, NameFollowsWhereScanResponsesCannotBeTold) {
    Advertise(Heard);
    FailMember("BluetoothLEAdvertisementReceivedEventArgs.QueryInterface", NoInterface);
    SetName(Response, u"ORV-2");
    AddSection(Response, {0x00, 0x05, 1});
    EXPECT_EQ(Hear(Response), Lines{TraceOf("ORV-2")});
    ExpectRecord(Record("ORV-2"));
}

TEST_F(HearingTest, RecordsOutOfRangeOrWithoutRoomAreRefused) {
    Advertise(Heard);
    DiscoveredDevice untouched;
    std::memset(&untouched, 0xEE, sizeof untouched);
    DiscoveredDevice info = untouched;
    for (const std::int32_t index : {-1, 1, 2, INT_MIN, INT_MAX}) {
        EXPECT_EQ(OrvScanner_GetDeviceInfo(0, index, &info), -1) << index;
    }
    EXPECT_EQ(Raw(info), Raw(untouched));
    EXPECT_EQ(OrvScanner_GetDeviceInfo(0, 0, nullptr), -1);
    EXPECT_EQ(OrvScanner_GetDeviceInfo(0, 0, &info), 0);
}

TEST_F(HearingTest, DevicesAreListedInTheOrderOfTheirFirstPacket) {
    constexpr std::int32_t Count = 1000;
    for (std::int32_t i = 0; i < Count; ++i) {
        const auto address = static_cast<BluetoothAddress>((i * 37) % Count + 1) << 16;
        ASSERT_EQ(OrvWorld_AddDevice(address, "ORV-many"), 0);
        Advertise(address);
    }
    for (std::int32_t i = 0; i < Count; i += 3) {
        Advertise(static_cast<BluetoothAddress>(i + 1) << 16);
    }
    EXPECT_EQ(OrvScanner_GetDeviceCount(0), Count);
    DiscoveredDevice info = {};
    for (std::int32_t i = 0; i < Count; ++i) {
        ASSERT_EQ(OrvScanner_GetDeviceInfo(0, i, &info), 0);
        ASSERT_EQ(info.address, static_cast<BluetoothAddress>((i * 37) % Count + 1) << 16);
    }
}

}  // namespace
}  // namespace orv
