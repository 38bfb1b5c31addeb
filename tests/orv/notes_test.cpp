// Tests the log reader: its notes (observations), calls that wait for calls of other threads, and a
// log that grows while it is read.
#include <filesystem>
#include <fstream>
#include <thread>

#include "host.h"
#include "orv/log/commands.h"
#include "orv/log/infer/follower.h"
#include "orv/log/show/text.h"
#include "orv/output_file.h"
#include "orv/problem.h"

namespace orv {
namespace {

using log::Cause;
using log::NoteKind;

class LogNotes : public WorldTest {};

struct Situation {
    const char* name;
    NoteKind kind;
    void (*happen)();
};

void Scan() {
    OrvScanner_Initialize();
    OrvScanner_Start(0);
}

const Situation Situations[] = {
    {"RadioGoesAway", NoteKind::AdvertisementsStopped,
     [] {
         Scan();
         for (int count = 0; count < 3; ++count) {
             OrvWorld_PassTime(200);
             Advertise(Address);
         }
         OrvWorld_PassTime(4000);
         OrvScanner_GetDeviceCount(0);
     }},
    {"NothingIsNear", NoteKind::NothingHeard,
     [] {
         Scan();
         OrvWorld_PassTime(4000);
         OrvScanner_Stop(0);
     }},
    {"ScanIsNeverStopped", NoteKind::HeardWithoutScan,
     [] {
         Scan();
         OrvScanner_Deinitialize(0);
         OrvWorld_PassTime(1500);
         Advertise(Address, OrvPacket_Advertisement, 0);
     }},
    {"CallbackFails", NoteKind::CallbackFailed,
     [] {
         CallLogged(true, [] { return OrvScanner_Initialize(); });
         CallLogged(true, [] { return OrvScanner_Start(0); });
         FailMember("BluetoothLEAdvertisementReceivedEventArgs.get_RawSignalStrengthInDBm");
         Advertise(Address);
     }},
    {"NameIsHostile", NoteKind::HostileNames,
     [] {
         const std::u16string name = u"ORV\n\x1B[2J";
         OrvWorld_SetName(Address, OrvPacket_Advertisement,
                          reinterpret_cast<const std::uint16_t*>(name.data()),
                          static_cast<std::int32_t>(name.size()));
         Scan();
         Advertise(Address);
     }},
    {"LinkIsGone", NoteKind::DroppedWithoutLink,
     [] {
         CallLogged(true, [] { return OrvDevice_Connect(Address); });
         CallLogged(true, [] { return OrvDevice_Disconnect(Address); });
         Notify(Address, Sequence(5), 0);
     }},
    {"DeviceSpeaksTooEarly", NoteKind::DroppedWhileConnecting,
     [] {
         OrvWorld_Answer(Address, OrvOperation_WriteDescriptor, OrvAnswer_After, 500);
         OrvWorld_HoldTime();
         std::thread host([] { CallLogged(true, [] { return OrvDevice_Connect(Address); }); });
         OrvWorld_AwaitCalls(WriteDescriptor, 1);
         OrvWorld_AwaitWaits(1);
         Notify(Address, Sequence(5));
         OrvWorld_PassTime(500);
         host.join();
     }},
};

TEST_F(LogNotes, NameWhatHappened) {
    for (const Situation& situation : Situations) {
        SCOPED_TRACE(situation.name);
        WorldTest::TearDown();
        WorldTest::SetUp();
        situation.happen();
        std::vector<NoteKind> kinds;
        for (const log::Note& note : ReadLog().notes) {
            kinds.push_back(note.kind);
        }
        EXPECT_EQ(kinds, std::vector{situation.kind});
    }
}

TEST_F(LogNotes, QuietUseHasNone) {
    CallLogged(true, [] { return OrvDevice_Connect(Address); });
    Notify(Address, Sequence(5));
    CallLogged(true, [] { return OrvDevice_Disconnect(Address); });
    EXPECT_TRUE(ReadLog().notes.empty());
}

// Two threads send. The second send fails after 2010 ms, of which it may have waited 1500 ms for
// the first one. So the log does not prove that the second write timed out.
TEST_F(LogNotes, SendThatWaitedForAnotherNeedNotHaveMissedItsLimit) {
    OrvDevice_Connect(Address);
    OrvWorld_Answer(Address, OrvOperation_WriteValue, OrvAnswer_After, 1500);
    OrvWorld_HoldTime();
    const auto send = [] { OrvDevice_Send(Address, 1, Sequence(1).data()); };
    std::thread first(send);
    OrvWorld_AwaitWaits(1);
    OrvWorld_Answer(Address, OrvOperation_WriteValue, OrvAnswer_EndsAs, 3);
    std::thread second([] { OrvDevice_Send(Address, 2, Sequence(2).data()); });
    AwaitLog("OrvDevice_Send 176685338322165 2");
    OrvWorld_PassTime(1500);
    first.join();
    OrvWorld_ReleaseTime();
    second.join();
    for (const char* line : {"Returned 1 after 1500 ms: OrvDevice_Send 176685338322165 1",
                             "Returned -1 after 2010 ms: OrvDevice_Send 176685338322165 2"}) {
        Logging_AppendLine(line, static_cast<std::int32_t>(std::string_view(line).size()));
    }
    const log::Call call = ReadLog().calls.back();
    ExpectNamed(call, Cause::Ended);
    ExpectNamed(call, Cause::WaitedForOthers);
}

TEST_F(LogNotes, HangingStartIsSeenWhileItHangsAndAfterwards) {
    OrvScanner_Initialize();
    OrvWorld_Hang("BluetoothLEAdvertisementWatcher.Start");
    std::thread host([] { CallLogged(true, [] { return OrvScanner_Start(0); }); });
    OrvWorld_AwaitCalls("BluetoothLEAdvertisementWatcher.Start", 1);
    OrvWorld_PassTime(5000);
    ExpectNamed(ReadLog().calls.back(), Cause::StillRunning);
    OrvWorld_Release("BluetoothLEAdvertisementWatcher.Start");
    host.join();
    const log::Call call = ReadLog().calls.back();
    EXPECT_EQ(call.result, 0);
    ExpectNamed(call, Cause::SystemSlow);
}

TEST_F(LogNotes, StayInALogThatAReportIsToReplace) {
    OrvDevice_Flush(Address);
    const std::string bytes = LogBytes();
    const std::string link = LogPath() + ".link", folder = LogPath() + ".folder";
    std::filesystem::create_symlink(LogPath(), link);
    std::filesystem::create_directory(folder);
    for (const std::string& output : {LogPath(), link, folder, std::string("/dev/null")}) {
        EXPECT_THROW(log::WriteReport(LogPath(), log::Threads::One, output), Problem) << output;
    }
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    std::filesystem::remove(link);
    std::filesystem::remove(folder);
    EXPECT_EQ(LogBytes(), bytes);
}

TEST_F(LogNotes, UnfinishedFilesLeaveTheOneBefore) {
    const std::string path = LogPath() + ".page", beside = path + ".part";
    std::ofstream(path) << "old";
    std::ofstream(beside) << "of a run that was killed";
    OutputFile(path).Write("new");
    std::string text;
    std::getline(std::ifstream(path), text);
    EXPECT_EQ(text, "old");
    EXPECT_FALSE(std::filesystem::exists(beside + "1"));
    std::filesystem::remove(path);
    std::filesystem::remove(beside);
}

TEST_F(LogNotes, PollsAreShownOnceAndCountedWhenSomethingElseComes) {
    char* text = nullptr;
    std::size_t length = 0;
    std::FILE* file = open_memstream(&text, &length);
    log::TextPrinter printer(file, /*colours=*/false);
    log::Call poll, other;
    poll.subject.function = log::Function::GetDeviceCount;
    other.subject.function = log::Function::Initialize;
    poll.result = other.result = 0;
    for (int i = 0; i < 5; ++i) {
        printer.Print(poll);
        printer.Show();
    }
    printer.Print(other);
    std::fclose(file);
    const std::string shown(text, length);
    std::free(text);
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 2) << shown;
    EXPECT_NE(shown.find("and 4 more polls\n"), shown.npos) << shown;
}

struct Counting : log::Listener {
    void OnCall(const log::Call&) override { ++calls; }
    int calls = 0;
};

TEST_F(LogNotes, FollowerSeesLinesAsTheyComeAndTheLogEmptied) {
    using Found = log::Follower::Found;
    Counting counting;
    log::Follower follower(LogPath(), log::Threads::One, counting);
    EXPECT_EQ(follower.Poll(), Found::Nothing);
    EXPECT_STREQ(follower.WaitsFor(Found::Nothing), "is empty");
    CallLogged(true, [] { return OrvDevice_Flush(Address); });
    EXPECT_EQ(follower.Poll(), Found::Lines);
    EXPECT_EQ(counting.calls, 1);
    EXPECT_EQ(follower.WaitsFor(Found::Nothing), nullptr);

    std::ofstream(LogPath(), std::ios::app | std::ios::binary) << "12:00:00.000\tBluetooth";
    EXPECT_EQ(follower.Poll(), Found::Nothing);
    std::ofstream(LogPath(), std::ios::app | std::ios::binary) << "Available\r\n";
    EXPECT_EQ(follower.Poll(), Found::Lines);

    // The follower must detect that the log was emptied, although the new log has the same length.
    const std::size_t length = LogBytes().size();
    Logging_Enable();
    Logging_AppendLine(std::string(length - 15, 'x').data(),
                       static_cast<std::int32_t>(length - 15));
    EXPECT_EQ(follower.Poll(), Found::Emptied);
    EXPECT_EQ(counting.calls, 2);
    EXPECT_EQ(follower.Poll(), Found::Lines);
    std::remove(LogPath().c_str());
    EXPECT_EQ(follower.Poll(), Found::NoFile);
    EXPECT_STREQ(follower.WaitsFor(Found::NoFile), "does not exist");
}

}  // namespace
}  // namespace orv
