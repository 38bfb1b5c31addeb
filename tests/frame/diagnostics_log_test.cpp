// Tests the time stamps of the diagnostics log, and when the library writes lines. The tests with
// the reference model check the content of the lines.
#include <algorithm>
#include <ctime>
#include <filesystem>
#include <string>
#include <thread>

#include "support/world.h"

namespace orv {
namespace {

using LogTest = WorldTest;

ResultCode Append(const std::string& text) {
    return Logging_AppendLine(text.data(), static_cast<std::int32_t>(text.size()));
}

TEST_F(LogTest, StampIsTheLocalTime) {
    const auto localTime = [](std::time_t seconds) {
        char text[9] = "";
        std::strftime(text, sizeof text, "%H:%M:%S", std::localtime(&seconds));
        return std::string(text);
    };
    OrvWorld_Reset(0);
    std::time_t second = std::time(nullptr);
    Append("now");
    const std::time_t last = std::time(nullptr);
    const std::string stamp = LogBytes().substr(0, 8);
    // The stamp may be one second later than `last`, because time() may lag behind the log's clock.
    while (localTime(second) != stamp && second <= last) {
        ++second;
    }
    EXPECT_EQ(localTime(second), stamp);
}

TEST_F(LogTest, StampFollowsSimulatedTime) {
    if (OrvWorld_TimeIsSimulated() == 0) {
        GTEST_SKIP() << "the shipped library's time is the system's";
    }
    const auto stamp = [](const std::string& line) {
        int hour = 0, minute = 0, second = 0, millisecond = 0;
        std::sscanf(line.c_str(), "%d:%d:%d.%d", &hour, &minute, &second, &millisecond);
        return ((hour * 60 + minute) * 60 + second) * 1000 + millisecond;
    };
    constexpr int Step = 1301107;  // gives each digit of the stamp many values
    for (int i = 0; i < 100; ++i) {
        Append("");
        OrvWorld_PassTime(Step);
    }
    const std::string bytes = LogBytes();
    constexpr std::size_t LineSize = 15;
    ASSERT_EQ(bytes.size(), 100 * LineSize);
    for (int i = 1; i < 100; ++i) {
        const int passed =
            stamp(bytes.substr(static_cast<std::size_t>(i) * LineSize)) - stamp(bytes);
        // Ignores whole hours, because daylight saving time may begin or end meanwhile.
        EXPECT_EQ((passed + 86400000) % 3600000, i * Step % 3600000) << i;
    }
}

TEST_F(LogTest, WritesNothingWhileOff) {
    EXPECT_EQ(Logging_Disable(), 0);
    std::filesystem::remove(LogPath());
    EXPECT_EQ(Append("lost"), -1);
    EXPECT_EQ(Logging_AppendLine(nullptr, -1), -1);
    EXPECT_EQ(BluetoothAvailable(), 0);
    EXPECT_EQ(Logging_Disable(), 0) << "switching off twice";
    EXPECT_FALSE(std::filesystem::exists(LogPath()));
}

TEST_F(LogTest, EnablingEmptiesTheFileAndDisablingKeepsIt) {
    Append("first");
    EXPECT_EQ(Logging_Enable(), 0);
    EXPECT_EQ(LogBytes(), "");
    Append("second");
    Logging_Disable();
    Append("lost");
    EXPECT_EQ(LogLines(), Lines{"second"});
    EXPECT_EQ(Logging_Enable(), 0);
    Append("gone");
    std::filesystem::remove(LogPath());
    EXPECT_EQ(Append("here"), 18);
    EXPECT_EQ(LogLines(), Lines{"here"});
}

TEST_F(LogTest, UnopenableFileLosesLinesAndFailsNoOtherExport) {
    std::filesystem::remove(LogPath());
    std::filesystem::create_directory(LogPath());
    EXPECT_EQ(Append("lost"), -1);
    EXPECT_EQ(BluetoothAvailable(), 0);
    FailMember("Radio.get_Kind");
    EXPECT_EQ(BluetoothAvailable(), -1);
    std::filesystem::remove(LogPath());
    EXPECT_EQ(Append("on"), 16) << "a line that is lost does not switch the log off";

    std::filesystem::remove(LogPath());
    std::filesystem::create_directory(LogPath());
    EXPECT_EQ(Logging_Enable(), -1);
    std::filesystem::remove(LogPath());
    EXPECT_EQ(Append("lost"), -1) << "failing to switch it on does";
    EXPECT_FALSE(std::filesystem::exists(LogPath()));
    EXPECT_EQ(Logging_Enable(), 0);
    EXPECT_EQ(Append("on"), 16);
}

Lines WrittenBy(int writer) {
    Lines lines;
    for (int i = 0; i < 200; ++i) {
        lines.push_back(std::to_string(writer) + std::string(60, '.') + std::to_string(i));
    }
    return lines;
}

TEST_F(LogTest, WritersOnSeveralThreadsKeepLinesWhole) {
    // Runs `other` while four threads append lines. Returns each thread's lines.
    const auto write = [](void (*other)()) {
        std::vector<std::thread> threads;
        threads.emplace_back(other);
        for (int writer = 0; writer < 4; ++writer) {
            threads.emplace_back([writer] {
                for (const std::string& line : WrittenBy(writer)) {
                    Append(line);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        std::vector<Lines> written(4);
        for (const std::string& line : LogLines()) {
            written.at(static_cast<std::size_t>(line.at(0) - '0')).push_back(line);
        }
        return written;
    };
    const std::vector<Lines> all = {WrittenBy(0), WrittenBy(1), WrittenBy(2), WrittenBy(3)};
    EXPECT_EQ(write([] {}), all);

    const std::vector<Lines> some = write([] {
        for (int i = 0; i < 50; ++i) {
            Logging_Disable();
            EXPECT_EQ(Logging_Enable(), 0);
        }
    });
    for (std::size_t writer = 0; writer < 4; ++writer) {
        for (const std::string& line : some[writer]) {
            EXPECT_NE(std::find(all[writer].begin(), all[writer].end(), line), all[writer].end());
        }
    }
}

}  // namespace
}  // namespace orv
