// Tests the log file if the disk is full, and if the library's file was deleted after loading.
#include <dlfcn.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "support/world.h"

namespace orv {
namespace {

using LogFileTest = WorldTest;

TEST_F(LogFileTest, FullDiskIsNotReported) {
    signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit full = {20, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_EQ(Logging_AppendLine("0123456789", 10), 24);
    EXPECT_EQ(Logging_AppendLine("0123456789", 10), 24);
    EXPECT_EQ(BluetoothAvailable(), 0);
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(LogBytes().size(), 20u);
    std::filesystem::remove(LogPath());
    EXPECT_EQ(Logging_AppendLine("x", 1), 15);
    EXPECT_EQ(LogLines(), Lines{"x"});
}

TEST_F(LogFileTest, LeavesNoFileOpen) {
    rlimit before = {};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few = {64, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(Logging_Enable(), 0);
        EXPECT_EQ(Logging_AppendLine("x", 1), 15);
    }
    setrlimit(RLIMIT_NOFILE, &before);
}

TEST_F(LogFileTest, DoesNotFollowALink) {
    const std::string other = LogPath() + ".other";
    std::ofstream(other) << "kept";
    std::filesystem::remove(LogPath());
    std::filesystem::create_symlink(other, LogPath());
    EXPECT_EQ(Logging_AppendLine("x", 1), -1);
    EXPECT_EQ(Logging_Enable(), -1);
    EXPECT_EQ(std::filesystem::file_size(other), 4u) << "the file behind the link was changed";
    std::filesystem::remove(LogPath());
    std::filesystem::remove(other);
    EXPECT_EQ(Logging_Enable(), 0);
}

TEST_F(LogFileTest, IsBesideADeletedLibrary) {
    const std::string copy = LibraryFile() + ".copy";
    for (const char* name : {"", " (deleted)"}) {
        const std::string file = copy + name;
        std::filesystem::copy_file(LibraryFile(), file,
                                   std::filesystem::copy_options::overwrite_existing);
        void* const library = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(library, nullptr) << dlerror();
        const auto enable = reinterpret_cast<ResultCode (*)()>(dlsym(library, "Logging_Enable"));
        // Linux appends " (deleted)" to the path of a deleted file. The second file has this ending
        // in its real name.
        const bool isGone = *name == '\0';
        if (isGone) {
            std::filesystem::remove(file);
        }
        EXPECT_EQ(enable(), 0);
        dlclose(library);
        EXPECT_EQ(enable(), 0) << "the log keeps its library loaded";
        EXPECT_TRUE(std::filesystem::remove(file + ".log")) << file;
        std::filesystem::remove(file);
    }
}

}  // namespace
}  // namespace orv
