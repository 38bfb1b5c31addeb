// Tests the log while another process reads it or keeps it open without sharing.
#include <windows.h>

#include <filesystem>
#include <fstream>

#include "support/world.h"

namespace orv {
namespace {

// Runs a process that keeps the log open while this object exists.
class Peer {
  public:
    explicit Peer(DWORD sharing) {
        SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
        HANDLE input = nullptr;
        HANDLE output = nullptr;
        CreatePipe(&input, &questions, &inherited, 0);
        CreatePipe(&answers, &output, &inherited, 0);
        SetHandleInformation(questions, HANDLE_FLAG_INHERIT, 0);
        STARTUPINFOA start = {};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdInput = input;
        start.hStdOutput = output;
        std::string command = "file_peer.exe \"" + LogPath() + "\" " + std::to_string(sharing);
        const BOOL started = CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0,
                                            nullptr, nullptr, &start, &process);
        CloseHandle(input);
        CloseHandle(output);
        char opened = 0;
        EXPECT_TRUE(started);
        Read(&opened, 1);
        EXPECT_EQ(opened, 'y') << "the peer could not open the log";
    }
    ~Peer() {
        CloseHandle(questions);
        WaitForSingleObject(process.hProcess, INFINITE);
        CloseHandle(process.hProcess);
        CloseHandle(process.hThread);
        CloseHandle(answers);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    // Returns the bytes that were added to the file since the last call.
    std::string ReadOn() {
        DWORD size = 0;
        WriteFile(questions, "\n", 1, &size, nullptr);
        size = 0;
        Read(&size, sizeof size);
        std::string bytes(size, '\0');
        Read(bytes.data(), size);
        return bytes;
    }

  private:
    void Read(void* bytes, DWORD size) {
        DWORD got = 0;
        for (DWORD total = 0; total < size; total += got) {
            ASSERT_TRUE(
                ReadFile(answers, static_cast<char*>(bytes) + total, size - total, &got, nullptr) &&
                got != 0)
                << "the peer is gone";
        }
    }

    HANDLE questions = nullptr;
    HANDLE answers = nullptr;
    PROCESS_INFORMATION process = {};
};

ResultCode Append(const std::string& text) {
    return Logging_AppendLine(text.data(), static_cast<std::int32_t>(text.size()));
}

using LogFileTest = WorldTest;

TEST_F(LogFileTest, IsCompleteForAReaderAfterEachLine) {
    constexpr std::size_t StampSize = 13;
    Peer reader(FILE_SHARE_READ | FILE_SHARE_WRITE);
    const std::pair<std::string, std::string> texts[] = {
        {"first", "first\r\n"},
        {"two\nlines", "two\r\nlines\r\n"},
        {"", "\r\n"},
        {"r\r\n\n", "r\r\r\n\r\n\r\n"},
        {std::string("zero\0and \x1a", 10), std::string("zero\0and \x1a\r\n", 12)},
        {"caf\xc3\xa9", "caf\xc3\xa9\r\n"},
    };
    std::string all;
    for (const auto& [text, stored] : texts) {
        EXPECT_EQ(Append(text), static_cast<ResultCode>(text.size() + 14));
        const std::string added = reader.ReadOn();
        ASSERT_GE(added.size(), StampSize);
        EXPECT_EQ(added.substr(StampSize), stored);
        all += added;
    }
    EXPECT_EQ(LogBytes(), all);
    EXPECT_EQ(Logging_Enable(), 0) << "a reader keeps the log from being emptied";
    EXPECT_EQ(LogBytes(), "");
}

// The system's code page would replace two letters of the directory's name with similar ones.
TEST_F(LogFileTest, IsNotStartedInAFolderOfASimilarName) {
    const std::filesystem::path folder = L"\u0141\u00f3d\u017a";
    const std::filesystem::path similar = L"L\u00f3dz";
    std::filesystem::create_directory(folder);
    std::filesystem::create_directory(similar);
    const auto library = std::filesystem::absolute(folder / L"quelvixwinlib.dll");
    const auto other = similar / L"quelvixwinlib.dll.log";
    CopyFileW(L"quelvixwinlib.dll", library.c_str(), FALSE);
    std::ofstream(other) << "kept";

    const HMODULE module = LoadLibraryW(library.c_str());
    ASSERT_NE(module, nullptr);
    const auto enable = reinterpret_cast<ResultCode (*)()>(
        reinterpret_cast<void*>(GetProcAddress(module, "Logging_Enable")));
    ASSERT_NE(enable, &Logging_Enable) << "not a module of its own";
    EXPECT_EQ(enable(), -1);
    EXPECT_EQ(std::filesystem::file_size(other), 4u) << "another file was emptied";
}

struct Holder {
    const char* name;
    DWORD sharing;
};

class HeldLog : public WorldTest, public testing::WithParamInterface<Holder> {};

TEST_P(HeldLog, LosesOnlyLines) {
    Append("before");
    {
        const Peer holder(GetParam().sharing);
        EXPECT_EQ(Append("lost"), -1);
        EXPECT_EQ(BluetoothAvailable(), 0);
        EXPECT_EQ(OrvDevice_Flush(Address), -1);
    }
    EXPECT_EQ(Append("after"), 19) << "a line that was lost does not switch the log off";
    EXPECT_EQ(LogLines(), (Lines{"before", "after"}));
    {
        const Peer holder(GetParam().sharing);
        EXPECT_EQ(Logging_Enable(), -1);
    }
    EXPECT_EQ(Append("lost"), -1) << "the log is on though it could not be emptied";
    EXPECT_EQ(LogLines(), (Lines{"before", "after"}));
    EXPECT_EQ(Logging_Enable(), 0);
    EXPECT_EQ(LogBytes(), "");
}

INSTANTIATE_TEST_SUITE_P(Sharing, HeldLog,
                         testing::Values(Holder{"None", 0}, Holder{"Reading", FILE_SHARE_READ}),
                         RowName);

}  // namespace
}  // namespace orv
