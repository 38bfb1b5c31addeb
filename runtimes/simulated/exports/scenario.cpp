#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "quelvixwinlib.h"
#include "runtimes/simulated/exports/control.h"
#include "runtimes/simulated/exports/flavour.h"
#include "runtimes/simulated/scenario/player.h"

using namespace orv;
using namespace orv::simulated;

namespace {

// Maximum size of a scenario file in bytes.
constexpr std::size_t LargestFile = std::size_t{64} << 20;

struct FileCloser {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

std::string ReadFile(const char* path) {
    // Opens only regular files, because opening a pipe waits for its other end.
    struct stat status;
    const bool isThere = stat(path, &status) == 0;
    if (isThere && (status.st_mode & S_IFMT) != S_IFREG) {
        throw ScenarioFault{0, "file",
                            "is a folder, a device or a pipe, a regular file would be right"};
    }
    const std::unique_ptr<std::FILE, FileCloser> file(isThere ? std::fopen(path, "rb") : nullptr);
    if (!file) {
        throw ScenarioFault{0, "file", "cannot be opened, a file that can be read would be right"};
    }
    std::string text;
    char block[4096];
    std::size_t length = 0;
    while (text.size() <= LargestFile &&
           (length = std::fread(block, 1, sizeof block, file.get())) > 0) {
        text.append(block, length);
    }
    if (std::ferror(file.get()) != 0) {
        throw ScenarioFault{0, "file", "cannot be read, a file that can be read would be right"};
    }
    if (text.size() > LargestFile) {
        throw ScenarioFault{0, "file", "is too large, 64 MiB at most would be right"};
    }
    return text;
}

void Report(const char* path, const ScenarioFault& fault, char* error, INT32 size) {
    if (error == nullptr || size <= 0) {
        return;
    }
    const std::string text = std::string(path == nullptr ? "" : path) + ":" +
                             std::to_string(fault.line) + ": " + fault.field + ": " + fault.text;
    const std::size_t copied = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    std::memcpy(error, text.data(), copied);
    error[copied] = '\0';
}

}  // namespace

int32_t OrvWorld_PlayScenario(const char* path, int32_t simulatedTime, char* error, int32_t size) {
    return Control([&](World& world) {
        try {
            if (path == nullptr) {
                throw ScenarioFault{0, "file", "is not named, a path would be right"};
            }
            const bool simulated = simulatedTime != 0 && IsLinkedIntoLibrary();
            Scenario scenario = ReadScenario(ReadFile(path));
            if (!IsLinkedIntoLibrary() && scenario.NeedsLinkedWorld()) {
                throw ScenarioFault{0, "scenario",
                                    "has activationLibrary or failWaits, neither would be right "
                                    "where the world is not linked into the library"};
            }
            if (!PlayScenario(world, std::move(scenario), simulated)) {
                throw ScenarioFault{
                    0, "world",
                    "is still at work, a call from outside its handlers would be right"};
            }
            Report("", {}, error, std::min(size, 1));
            return simulatedTime != 0 && !simulated ? 1 : 0;
        } catch (const ScenarioFault& fault) {
            Report(path, fault, error, size);
            return NoSuchThing;
        } catch (const std::bad_alloc&) {
            Report(path, {0, "memory", "is exhausted"}, error, size);
            return NoSuchThing;
        }
    });
}

const char* OrvWorld_Version(void) {
    return QUELVIXWINLIB_VERSION;
}
