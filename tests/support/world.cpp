#include "world.h"

#include <chrono>
#include <numeric>
#include <thread>

namespace orv {
namespace {

std::vector<BluetoothAddress> devices;
std::vector<std::string> failingMembers;

using CallText = std::int32_t (*)(std::int32_t, char*, std::int32_t);

std::string TextAt(CallText at, std::int32_t index) {
    char text[200] = "";
    at(index, text, sizeof text);
    return text;
}

void TakeBackFaults() {
    OrvWorld_FailCall(0, 0);
    for (const std::string& member : failingMembers) {
        OrvWorld_FailMember(member.c_str(), 0);
    }
    failingMembers.clear();
    for (const BluetoothAddress address : devices) {
        for (std::int32_t operation = 0; operation <= OrvOperation_WriteValue; ++operation) {
            OrvWorld_Answer(address, operation, OrvAnswer_Standard, 0);
        }
    }
}

void RemoveSessionsAndLinks() {
    const ResultCode highest = OrvScanner_Initialize();
    EXPECT_GE(highest, 0);
    for (ResultCode id = highest; id >= 0; --id) {
        OrvScanner_Deinitialize(id);
    }
    for (const BluetoothAddress address : devices) {
        while (OrvDevice_Disconnect(address) == 0) {
        }
    }
    devices.clear();
}

}  // namespace

void AddDevice(BluetoothAddress address, const char* name) {
    ASSERT_EQ(OrvWorld_AddDevice(address, name), 0);
    devices.push_back(address);
}

void FailMember(const std::string& member, std::int32_t code) {
    failingMembers.push_back(member);
    OrvWorld_FailMember(member.c_str(), code);
}

void Advertise(BluetoothAddress address, std::int32_t packet, std::int32_t watcher) {
    OrvWorld_Advertise(address, packet, watcher);
    OrvWorld_Settle();
}

void Notify(BluetoothAddress address, const Bytes& data, std::int32_t registration) {
    OrvWorld_Notify(address, data.data(), static_cast<std::int32_t>(data.size()), registration);
    OrvWorld_Settle();
}

Bytes Sequence(std::size_t count, std::size_t first) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(first));
    return bytes;
}

Lines Calls(std::int32_t from) {
    Lines calls;
    for (std::int32_t i = from; i < OrvWorld_CallCount(nullptr); ++i) {
        const std::string call = TextAt(OrvWorld_CallAt, i);
        if (call.find('.') != std::string::npos &&
            call.find(".QueryInterface") == std::string::npos) {
            calls.push_back(call);
        }
    }
    return calls;
}

bool AwaitLog(const std::string& text) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (LogBytes().find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

void WorldTest::SetUp() {
    OrvWorld_Reset(1);
    OrvWorld_SetAdapter(1);
    ASSERT_EQ(OrvWorld_AddRadio(OrvRadioKind_Bluetooth, OrvRadioState_On), 0);
    AddDevice(Address, "ORV-0042");
    ASSERT_EQ(Logging_Enable(), 0);
}

void WorldTest::TearDown() {
    OrvWorld_ReleaseTime();
    OrvWorld_Settle();
    TakeBackFaults();
    RemoveSessionsAndLinks();
    Logging_Disable();
    OrvWorld_Settle();
    for (std::int32_t i = 0; i < OrvWorld_UnexpectedCallCount(); ++i) {
        ADD_FAILURE() << "the library called " << TextAt(OrvWorld_UnexpectedCallAt, i);
    }
    EXPECT_EQ(OrvWorld_ImproperHandlers(), 0);
    EXPECT_EQ(OrvWorld_HeldObjects(), 0);
    EXPECT_EQ(OrvWorld_HeldReferences(), 0);
    // Event sources and unfinished operations keep handlers until the simulated world is reset.
    OrvWorld_Reset(1);
    EXPECT_EQ(OrvWorld_HeldHandlers(), 0);
}

}  // namespace orv
