// Tests the log reader with single lines and small logs, some of them hostile or damaged.
#include <gtest/gtest.h>

#include <algorithm>

#include "orv/log/infer/causes.h"
#include "orv/log/read/entry.h"
#include "orv/log/read/lines.h"
#include "tests/orv/findings.h"

namespace orv::log {
namespace {

struct Text {
    const char* text;
    Kind kind;
    std::uint64_t handle = 0;
    std::int64_t number = 0;  // second argument of a call, or last number of another line
};

const Text Texts[] = {
    {"BluetoothAvailable", Kind::Call},
    {"BluetoothAvailable ", Kind::Host},
    {"OrvScanner_Stop -1", Kind::Call, 0xFFFFFFFF},
    {"OrvScanner_Stop 2147483648", Kind::Host},
    {"OrvScanner_Stop 01", Kind::Host},
    {"OrvScanner_Stop -0", Kind::Host},
    {"OrvScanner_GetDeviceInfo 0 3", Kind::Call, 0, 3},
    {"OrvDevice_Send 18446744073709551615 -7", Kind::Call, ~0ULL, -7},
    {"OrvDevice_Send 1", Kind::Host},
    {"OrvDevice_Connect 1 failed", Kind::Host},
    {"OrvDevice_Connects 1", Kind::Host},
    {"Exception: unknown type", Kind::Failure},
    {"OnAdvertisementReceived 4660 <ORV-0042> -67", Kind::Advertisement, 4660, -67},
    {"OnAdvertisementReceived 4660 <> -67", Kind::Advertisement, 4660, -67},
    {"OnAdvertisementReceived 4660 <a> -1> -67", Kind::Advertisement, 4660, -67},
    {"OnAdvertisementReceived 4660 <a", Kind::Host},
    {"OnAdvertisementReceived 4660 <a> -99999", Kind::Host},
    {"OnDataReceived 4660 244", Kind::Notification, 4660, 244},
    {"Returned -1 after 2003 ms: OrvDevice_Connect 5", Kind::Result, 5, -1},
    {"Returned -1 after -3 ms: OrvDevice_Connect 5", Kind::Host},
    {"Returned -2 after 3 ms: OrvDevice_Connect 5", Kind::Host},
    {"Returned -1 after 2147483648 ms: OrvDevice_Connect 5", Kind::Host},
    {"Returned -1 after 3 ms: something", Kind::Host},
    {"", Kind::Host},
};

TEST(LogText, IsWhatTheLibraryWrites) {
    for (const Text& row : Texts) {
        SCOPED_TRACE(row.text);
        const Entry entry = ReadEntry(row.text);
        EXPECT_EQ(entry.kind, row.kind);
        EXPECT_EQ(entry.subject.handle, row.handle);
        EXPECT_EQ(entry.kind == Kind::Call ? entry.subject.number : entry.number, row.number);
    }
}

struct Whole {
    const char* name;
    std::string_view bytes;
    std::vector<std::string_view> texts;
    std::uint64_t strayLines = 0;
};

const Whole Wholes[] = {
    {"LineFeedInsideATextBelongsToIt",
     "12:00:00.000\ta\r\nb\r\n12:00:00.001\tc\r\n",
     {"a\r\nb", "c"}},
    {"NameHoldsAWholeLine",
     "12:00:00.000\tOnAdvertisementReceived 1 <x\r\n12:00:00.000\tOrvDevice_Connect 1\r\n> -3\r\n"
     "12:00:00.001\tc\r\n",
     {"OnAdvertisementReceived 1 <x\r\n12:00:00.000\tOrvDevice_Connect 1\r\n> -3", "c"}},
    {"NameIsNeverClosed",
     "12:00:00.000\tOnAdvertisementReceived 1 <x\r\n12:00:00.000\tBluetoothAvailable\r\n",
     {"OnAdvertisementReceived 1 <x", "BluetoothAvailable"}},
    {"GarbageBeforeAndNoStamp",
     std::string_view("\0\xFF\x80garbage\n25:00:00.000\tx\n12:00:00.000\ta\n", 41),
     {"a"},
     2},
    {"PlainLineFeedsAndNoTexts", "12:00:00.000\t\n12:00:00.000\t\n", {"", ""}},
    {"Nothing", "", {}},
    {"NoEnd", "12:00:00.000\ta", {"a"}},
};

TEST(LogLinesOf, AreCutWhereTheLibraryEndsThem) {
    for (const Whole& row : Wholes) {
        SCOPED_TRACE(row.name);
        LineReader reader(row.bytes);
        std::vector<std::string_view> texts;
        while (const auto line = reader.Next()) {
            texts.push_back(line->text);
            EXPECT_EQ(line->complete, row.bytes.ends_with('\n'));
        }
        EXPECT_EQ(texts, row.texts);
        EXPECT_EQ(reader.StrayLines(), row.strayLines);
    }
}

TEST(LogTimeline, GoesOnOverMidnightAndOtherJumps) {
    constexpr std::int32_t Day = 86'400'000;
    struct Row {
        std::vector<std::int32_t> stamps;
        std::vector<std::int64_t> times;
        int jumps;
    };
    const Row rows[] = {
        {{5000, 4990, 5001}, {5000, 4990, 5001}, 0},  // lines of two threads may be out of order
        {{Day - 1, 0, 1, Day - 1, 5}, {Day - 1, Day, Day + 1, 2 * Day - 1, 2 * Day + 5}, 0},
        {{Day - 1, 1, Day - 1, 2}, {Day - 1, Day + 1, 2 * Day - 1, 2 * Day + 2}, 0},
        // The clock is set back.
        {{7'200'000, 3'600'000, 3'600'100}, {7'200'000, 7'200'000, 7'200'100}, 1},
        // A device forged the second stamp of this row, and the third stamp of the next row.
        {{40'000'000, 9, 40'000'007}, {40'000'000, 40'000'000, 40'000'007}, 1},
        {{100, 200, 40'000'000, 300}, {100, 200, 40'000'000, 300}, 1},
    };
    for (const Row& row : rows) {
        Timeline timeline;
        std::vector<std::int64_t> times;
        for (const std::int32_t stamp : row.stamps) {
            times.push_back(timeline.Place(stamp));
        }
        EXPECT_EQ(times, row.times);
        EXPECT_EQ(timeline.Jumps(), row.jumps);
    }
}

// The log reader must report the true cause of the last failure, even if an overlapping call
// changed the state before the result line was written, or the machine slept.
TEST(LogProof, NeverRulesOutTheCause) {
    struct Row {
        Cause cause;
        std::vector<const char*> texts;
    };
    const Row rows[] = {
        {Cause::NoLink,
         {"OrvDevice_Connect 5", "Returned 0 after 0 ms: OrvDevice_Connect 5", "OrvDevice_Send 5 2",
          "OrvDevice_Disconnect 5", "Returned 0 after 0 ms: OrvDevice_Disconnect 5",
          "Returned 2 after 0 ms: OrvDevice_Send 5 2", "OrvDevice_Receive 5",
          "Returned -1 after 0 ms: OrvDevice_Receive 5"}},
        {Cause::LimitPassed,
         {"OrvDevice_Flush 5", "OrvDevice_Connect 5", "Returned 0 after 0 ms: OrvDevice_Connect 5",
          "Returned -1 after 0 ms: OrvDevice_Flush 5", "OrvDevice_Send 5 2",
          "Returned -1 after 2001 ms: OrvDevice_Send 5 2"}},
        {Cause::NoLink,
         {"OrvDevice_Connect 5", "OrvDevice_Disconnect 5",
          "Returned 0 after 0 ms: OrvDevice_Disconnect 5",
          "Returned 0 after 0 ms: OrvDevice_Connect 5", "OrvDevice_Receive 5",
          "Returned -1 after 0 ms: OrvDevice_Receive 5"}},
        {Cause::IndexOutOfRange,
         {"OrvScanner_GetDeviceCount 0", "OrvScanner_Start 0",
          "Returned 0 after 0 ms: OrvScanner_Start 0",
          "Returned 5 after 0 ms: OrvScanner_GetDeviceCount 0", "OrvScanner_GetDeviceInfo 0 3",
          "Returned -1 after 0 ms: OrvScanner_GetDeviceInfo 0 3"}},
        {Cause::IndexOutOfRange,
         {"OrvScanner_Initialize", "OrvScanner_Deinitialize 0",
          "Returned 0 after 0 ms: OrvScanner_Initialize",
          "Returned 0 after 0 ms: OrvScanner_Deinitialize 0", "OrvScanner_GetDeviceInfo 0 3",
          "Returned -1 after 0 ms: OrvScanner_GetDeviceInfo 0 3"}},
        // The exception comes from another link's callback. That link was opened before the log
        // began.
        {Cause::NoLink,
         {"OrvDevice_Receive 5", "Exception: unknown type",
          "Returned -1 after 0 ms: OrvDevice_Receive 5"}},
        {Cause::LimitPassed,
         {"OrvDevice_Send 5 2", "Returned -1 after 2900 ms: OrvDevice_Send 5 2"}},
        {Cause::Refused,
         {"OrvDevice_Connect 5", "Returned -1 after 60000 ms: OrvDevice_Connect 5"}},
    };
    for (const Row& row : rows) {
        std::string bytes;
        for (const char* text : row.texts) {
            // The log begins 60 s before the calls, because the log reader ignores the result of a
            // call that began before the log.
            bytes += (bytes.empty() ? "12:00:00.000\t\n12:01:00.000\t" : "12:01:00.000\t") +
                     std::string(text) + '\n';
        }
        SCOPED_TRACE(bytes);
        const Suspects named = Explain(FindAll(bytes, Threads::One).calls.back());
        EXPECT_TRUE(std::any_of(named.begin(), named.end(), [&](const Suspect& suspect) {
            return suspect.cause == row.cause;
        }));
    }
}

TEST(LogEvidence, PutsNoCauseFirstThatItContradicts) {
    const char* const Rejected = "Returned -1 after 5 ms: OrvDevice_Connect 5";
    struct Row {
        Cause first;
        std::vector<const char*> before;
    };
    const Row rows[] = {
        {Cause::UnknownDevice, {"OnAdvertisementReceived 6 <ORV-0042> -60"}},
        {Cause::InUse, {"OnAdvertisementReceived 5 <ORV-0042> -60"}},
        {Cause::InUse,
         {"OnAdvertisementReceived 5 <ORV-0042> -60", "OrvDevice_Connect 5", Rejected,
          "OrvDevice_Connect 5", Rejected}},
        {Cause::InUse, {"OrvDevice_Connect 5", "Returned 0 after 5 ms: OrvDevice_Connect 5"}},
    };
    for (const Row& row : rows) {
        std::string bytes;
        for (const char* text : row.before) {
            bytes += "12:00:00.000\t" + std::string(text) + '\n';
        }
        bytes += "12:00:00.000\tOrvDevice_Connect 5\n12:00:00.005\t" + std::string(Rejected) + '\n';
        SCOPED_TRACE(bytes);
        EXPECT_EQ(Explain(FindAll(bytes, Threads::One).calls.back()).front().cause, row.first);
    }
}

TEST(LogEvidence, ShowsWhatKeepsCallsFromReturning) {
    const Findings findings = FindAll(
        "12:00:00.000\tBluetoothAvailable\n12:00:00.000\tReturned 0 after 0 ms: "
        "BluetoothAvailable\n"
        "12:00:01.000\tOrvDevice_Disconnect 5\n12:00:02.000\tOrvDevice_Flush 6\n12:00:09.000\t\n",
        Threads::One);
    EXPECT_EQ(Explain(findings.calls.at(1)).front().cause, Cause::ClosingHangs);
    EXPECT_EQ(Explain(findings.calls.at(2)).front().cause, Cause::WaitedForOthers);
    EXPECT_TRUE(HasSign(findings.calls.at(2)));
    // This log ends during OrvDevice_Disconnect, and shows that the link existed.
    const Findings killed = FindAll(
        "12:00:00.000\tOrvDevice_Connect 5\n12:00:00.000\tReturned 0 after 0 ms: "
        "OrvDevice_Connect 5\n12:00:00.000\tOrvDevice_Disconnect 5\n",
        Threads::One);
    EXPECT_EQ(Explain(killed.calls.back()).front().cause, Cause::ClosingHangs);
}

// The log reader must not store a long forged line again for each call.
TEST(LogMemory, HoldsAForgedFailureLineOncePerCallInPart) {
    constexpr std::size_t Calls = 150;
    std::string bytes;
    for (std::size_t i = 0; i < Calls; ++i) {
        bytes += "12:00:00.000\tOrvDevice_Connect " + std::to_string(i) + '\n';
    }
    bytes += "12:00:00.001\tException: " + std::string(1'000'000, 'x') + "\n12:00:00.002\t" +
             "Returned -1 after 2 ms: OrvDevice_Connect 0\n";
    std::size_t kept = 0;
    for (const Call& call : FindAll(bytes, Threads::Many).calls) {
        EXPECT_EQ(call.failures.count, 1);
        kept += call.failures.text.size();
    }
    EXPECT_LT(kept, bytes.size() / 10);
}

// The first result belongs to a call that began before the log was emptied, the second to the
// logged call of another thread.
TEST(LogBegin, LeavesOutTheResultOfACallBeforeIt) {
    const Findings findings = FindAll(
        "12:00:00.000\tOrvDevice_Receive 5\n"
        "12:00:00.010\tReturned -1 after 1500 ms: OrvDevice_Receive 5\n"
        "12:00:00.011\tReturned 3 after 11 ms: OrvDevice_Receive 5\n",
        Threads::One);
    EXPECT_EQ(findings.calls.at(0).result, 3);
}

// In each prefix of a log with one call, the log reader must find this call or none.
TEST(LogTruncation, NeverInventsACall) {
    const std::string_view whole =
        "12:00:00.000\tOrvDevice_Connect 176685338322165\r\n"
        "12:00:00.010\tOnAdvertisementReceived 5 <O\x1B[2J\r\n12:00:00.010\tOrvDevice_Flush 1> "
        "-5\r\n"
        "12:00:02.003\tReturned -1 after 2003 ms: OrvDevice_Connect 176685338322165\r\n";
    for (std::size_t length = 13; length <= whole.size(); ++length) {
        const Findings findings = FindAll(whole.substr(0, length), Threads::One);
        ASSERT_LE(findings.calls.size(), 1u) << length;
        if (!findings.calls.empty()) {
            EXPECT_EQ(findings.calls[0].subject.handle, 176685338322165u);
        }
    }
}

}  // namespace
}  // namespace orv::log
