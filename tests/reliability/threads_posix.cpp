#include "tests/support/threads_posix.h"

#include "tests/support/world.h"

namespace orv {
namespace {

using Threads = WorldTest;

TEST_F(Threads, LeaveSignalsToThoseOfTheHost) {
    ASSERT_EQ(OrvDevice_Connect(Address), 0);
    Notify(Address, {1});
    const OtherThreads threads = CountOtherThreads();
    EXPECT_GT(threads.all, 0);
    EXPECT_EQ(threads.handling, 0);
}

}  // namespace
}  // namespace orv
