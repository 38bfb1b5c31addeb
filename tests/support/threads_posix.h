// Finds the threads that the system may choose to handle a signal of the process.
#pragma once

#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace orv {

struct OtherThreads {
    int all = 0;
    int handling = 0;  // threads that do not block SIGTERM
};

inline OtherThreads CountOtherThreads() {
    OtherThreads threads;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream status(task.path() / "status");
        for (std::string line; std::getline(status, line);) {
            constexpr const char Mask[] = "SigBlk:";
            if (line.rfind(Mask, 0) == 0 &&
                task.path().filename() != std::to_string(syscall(SYS_gettid))) {
                const std::uint64_t blocked = std::stoull(line.substr(sizeof Mask), nullptr, 16);
                ++threads.all;
                threads.handling += (blocked >> (SIGTERM - 1) & 1) == 0;
            }
        }
    }
    return threads;
}

}  // namespace orv
