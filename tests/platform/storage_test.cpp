// The queue that grows with what a device sends, against a plain model; the ends of ids and counts.
#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <random>
#include <vector>

#include "frame/export_frame.h"
#include "link/receive_queue.h"
#include "scanner/scanner_session.h"

namespace orv {
namespace {

TEST(ReceiveQueue, IsOneStreamWhateverTheSizes) {
    std::mt19937 random(20260101);
    ReceiveQueue queue;
    std::deque<std::uint8_t> model;
    std::uint8_t next = 0;
    for (int step = 0; step < 3000; ++step) {
        const auto amount = std::size_t{1} << random() % 14;
        if (random() % 2) {
            for (std::size_t i = 0; i < amount; ++i) {
                model.push_back(next);
                queue.Append(next++);
            }
        } else if (random() % 100 == 0) {
            ASSERT_EQ(queue.Clear(), model.size());
            model.clear();
        } else {
            std::vector<std::uint8_t> taken(amount, 0xEE);
            const std::size_t count = queue.Take(taken.data(), amount);
            ASSERT_EQ(count, std::min(amount, model.size()));
            ASSERT_TRUE(
                std::equal(taken.begin(), taken.begin() + static_cast<long>(count), model.begin()));
            ASSERT_TRUE(count == amount || taken[count] == 0xEE) << "wrote beyond what it took";
            model.erase(model.begin(), model.begin() + static_cast<long>(count));
        }
        ASSERT_EQ(queue.Size(), model.size());
    }
}

TEST(ScannerSessions, EndWithTheLargestId) {
    {
        const Lock lock(ScannerLock);
        scannerSessions.sessions.push_back({std::numeric_limits<std::int32_t>::max() - 1, {}, {}});
    }
    EXPECT_EQ(OrvScanner_Initialize(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(OrvScanner_Initialize(), -1);
    const Lock lock(ScannerLock);
    scannerSessions.sessions.clear();
}

TEST(CountResult, NeverLooksLikeAFailure) {
    EXPECT_EQ(CountResult(7), 7);
    for (const std::size_t count : {std::size_t{INT32_MAX}, std::size_t{INT32_MAX} + 1, SIZE_MAX}) {
        EXPECT_EQ(CountResult(count), INT32_MAX);
    }
}

}  // namespace
}  // namespace orv
