// Bytes from the device: queued as one stream, taken or thrown away by the host, never logged.
#include <climits>
#include <string>

#include "support/world.h"

namespace orv {
namespace {

std::string TraceOf(std::size_t length) {
    return "OnDataReceived 176685338322165 " + std::to_string(length);
}

class ReceiveTest : public WorldTest {
  protected:
    void SetUp() override {
        WorldTest::SetUp();
        ASSERT_EQ(OrvDevice_Connect(Address), 0);
    }
};

struct Taking {
    const char* name;
    std::vector<std::size_t> notified;
    std::int32_t count;
    std::size_t taken;
    ResultCode left;
};

const Taking Takings[] = {
    {"NothingQueued", {}, 4, 0, 0},
    {"EmptyValues", {0, 0}, 4, 0, 0},
    {"Part", {7}, 3, 3, 4},
    {"All", {7}, 7, 7, 0},
    {"AcrossBlocks", {3, 4}, 5, 5, 2},
    {"MoreThanQueued", {3, 0, 4}, 10, 7, 0},
    {"LargestCount", {7}, INT_MAX, 7, 0},
    {"CountZero", {7}, 0, 0, 7},
    {"CountNegative", {7}, -1, 0, 7},
    {"CountMostNegative", {7}, INT_MIN, 0, 7},
    {"OneOfMany", {244, 244, 244}, 1, 1, 731},
    {"LargeBlocks", {20000, 512, 65535}, 40000, 40000, 46047},
};

class Receive : public ReceiveTest, public testing::WithParamInterface<Taking> {};

TEST_P(Receive, TakesTheOldestBytesAndLeavesTheRest) {
    const Taking& row = GetParam();
    std::size_t next = 0;  // the bytes count on through all blocks
    for (const std::size_t size : row.notified) {
        EXPECT_EQ(LinesOf([&] { Notify(Address, Sequence(size, next)); }), Lines{TraceOf(size)});
        next += size;
    }
    Bytes buffer(50000, 0xEE);
    Bytes expected = buffer;
    const Bytes taken = Sequence(row.taken);
    std::copy(taken.begin(), taken.end(), expected.begin());
    EXPECT_EQ(OrvDevice_Receive(Address, row.count, buffer.data()),
              static_cast<ResultCode>(row.taken));
    EXPECT_TRUE(buffer == expected) << "other bytes, or more of them";
    if (row.left > 0) {
        EXPECT_EQ(OrvDevice_Receive(Address, 1, buffer.data()), 1);
        EXPECT_EQ(buffer[0], static_cast<std::uint8_t>(row.taken));
        EXPECT_EQ(OrvDevice_Flush(Address), row.left - 1);
    }
    EXPECT_EQ(OrvDevice_Flush(Address), 0);
    EXPECT_EQ(OrvDevice_Receive(Address, 1, buffer.data()), 0);
}

INSTANTIATE_TEST_SUITE_P(Takings, Receive, testing::ValuesIn(Takings), RowName);

TEST_F(ReceiveTest, NullBufferLosesNothing) {
    Notify(Address, Sequence(7));
    for (const std::int32_t count : {1, 7, INT_MAX}) {
        EXPECT_EQ(OrvDevice_Receive(Address, count, nullptr), -1);
    }
    EXPECT_EQ(OrvDevice_Receive(Address, 0, nullptr), 0);
    EXPECT_EQ(OrvDevice_Receive(Address, -1, nullptr), 0);
    EXPECT_EQ(OrvDevice_Flush(Address), 7);
}

}  // namespace
}  // namespace orv
