// Tests OrvDevice_Send: it starts one write for each call, returns success if the write completes,
// and holds the links' lock until then.
#include <string>
#include <thread>

#include "support/world.h"

namespace orv {
namespace {

constexpr const char* WriteValue = "GattCharacteristic.WriteValueAsync";
constexpr const char* Trace = "OrvDevice_Send 176685338322165 1";
constexpr std::uint8_t OneByte = 0xA5;

class SendTest : public WorldTest {
  protected:
    void SetUp() override {
        WorldTest::SetUp();
        ASSERT_EQ(OrvDevice_Connect(Address), 0);
    }
};

TEST_F(SendTest, MakesOneWriteAndNoMoreCalls) {
    const std::int32_t before = OrvWorld_CallCount(nullptr);
    ExpectCall([] { return OrvDevice_Send(Address, 1, &OneByte); }, 1, {Trace});
    EXPECT_EQ(Calls(before),
              (Lines{"DataWriter.ActivateInstance", "DataWriter.WriteBytes",
                     "DataWriter.DetachBuffer", WriteValue, "IAsyncOperation.put_Completed"}));
}

TEST_F(SendTest, BlocksOfAnySizeArriveUnchanged) {
    std::int32_t writes = 0;
    for (const std::size_t size : {0u, 1u, 2u, 20u, 244u, 512u, 100u * 1024}) {
        const Bytes sent = Sequence(size, 0xF0);
        const auto length = static_cast<std::int32_t>(size);
        EXPECT_EQ(OrvDevice_Send(Address, length, size == 0 ? nullptr : sent.data()), length);
        EXPECT_EQ(OrvWorld_WriteCount(Address), ++writes);
        Bytes written(size + 1);
        EXPECT_EQ(OrvWorld_WriteAt(Address, writes - 1, written.data(), length + 1), length);
        written.pop_back();
        EXPECT_TRUE(written == sent) << size;
    }
}

// Until OrvDevice_Send times out, calls of OrvDevice exports wait. All other exports return at
// once.
TEST_F(SendTest, BlocksOnlyLinkExportsWhileItWaits) {
    AddDevice(OtherAddress, "ORV-0043");
    ASSERT_EQ(OrvDevice_Connect(OtherAddress), 0);
    OrvWorld_Answer(Address, OrvOperation_WriteValue, OrvAnswer_Never, 1);
    OrvWorld_HoldTime();
    const std::int64_t start = OrvWorld_Now();
    const std::int32_t waits = OrvWorld_CallCount("IAsyncOperation.put_Completed");
    std::thread sending([] { EXPECT_EQ(OrvDevice_Send(Address, 0, nullptr), -1); });
    EXPECT_EQ(OrvWorld_AwaitCalls("IAsyncOperation.put_Completed", waits + 1), 0);

    const auto afterTheSend = [&](auto call) {
        return std::thread([start, call] {
            EXPECT_GE(call(), 0);
            EXPECT_GE(OrvWorld_Now() - start, 1980) << "did not wait for the send";
        });
    };
    std::thread waiting[] = {
        afterTheSend([] { return OrvDevice_Receive(OtherAddress, 0, nullptr); }),
        afterTheSend([] { return OrvDevice_Flush(Address); }),
        afterTheSend([] { return OrvDevice_Send(OtherAddress, 0, nullptr); }),
        afterTheSend([] { return OrvDevice_Connect(OtherAddress); }),
    };
    const std::uint8_t notified[] = {1, 2, 3};
    OrvWorld_Notify(OtherAddress, notified, 3, 0);
    EXPECT_EQ(OrvWorld_AwaitCalls("DataReader.FromBuffer", 1), 0);
    for (const char* trace : {"OrvDevice_Receive 18838586676582", "OrvDevice_Flush 1766",
                              "OrvDevice_Send 18838586676582", "OrvDevice_Connect 18838586676582",
                              "OnDataReceived 18838586676582 3"}) {
        EXPECT_TRUE(AwaitLog(trace)) << "traced before the lock";
    }
    EXPECT_EQ(Logging_AppendLine("host", 4), 18);
    EXPECT_EQ(BluetoothAvailable(), 0);
    EXPECT_EQ(OrvScanner_Initialize(), 0);
    EXPECT_EQ(OrvScanner_Start(0), 0);
    OrvWorld_Advertise(OtherAddress, OrvPacket_Advertisement, -1);
    EXPECT_TRUE(AwaitLog("OnAdvertisementReceived 18838586676582"));
    EXPECT_GE(OrvScanner_GetDeviceCount(0), 0);
    EXPECT_EQ(OrvScanner_Stop(0), 0);

    OrvWorld_ReleaseTime();
    sending.join();
    for (std::thread& thread : waiting) {
        thread.join();
    }
    OrvWorld_Settle();
    EXPECT_EQ(OrvDevice_Flush(OtherAddress), 3) << "the notification was lost";
}

}  // namespace
}  // namespace orv
