#include "orv/log/infer/follower.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "orv/log/read/log_file.h"
#include "orv/problem.h"

namespace orv::log {

namespace {

constexpr std::size_t TailLength = 64;

constexpr std::size_t MostAtOnce = std::size_t{4} << 20;

constexpr std::size_t LongestLine = std::size_t{16} << 20;

}  // namespace

Follower::Follower(std::string ofPath, Threads hostThreads, Listener& to)
    : path(std::move(ofPath)), threads(hostThreads), listener(to) {
    Restart();
}

void Follower::Restart() {
    analysis.reset();
    position = 0;
    tail.clear();
    unfinished.clear();
}

bool Follower::WasEmptied() const {
    const std::optional<std::string> before = ReadBytes(path, position - tail.size(), tail.size());
    return before && *before != tail;
}

Follower::Found Follower::Poll() {
    if (WasEmptied()) {
        End();
        Restart();
        return Found::Emptied;
    }
    const std::optional<std::string> added = ReadBytes(path, position, MostAtOnce);
    if (!added) {
        return Found::NoFile;
    }
    if (added->empty()) {
        return Found::Nothing;
    }
    position += added->size();
    tail = (tail + *added)
               .substr(tail.size() + added->size() -
                       std::min(tail.size() + added->size(), TailLength));
    unfinished += *added;
    if (unfinished.size() > LongestLine) {
        throw Problem(ExitStatus::FileFailed, path + " is not a log: a line has more than 16 MiB");
    }
    const std::size_t end = unfinished.rfind('\n');
    if (end == unfinished.npos) {
        return Found::Nothing;
    }
    const std::string lines = unfinished.substr(0, end + 1);
    unfinished.erase(0, end + 1);
    if (!analysis) {
        ResultFinder finder;
        finder.Feed(lines);
        analysis = std::make_unique<Analysis>(listener, finder.Use(), threads);
    }
    analysis->Feed(lines);
    return Found::Lines;
}

const char* Follower::WaitsFor(Found latest) const {
    if (latest == Found::NoFile) {
        return "does not exist";
    }
    if (position == 0) {
        return "is empty";
    }
    return analysis && analysis->Sums().lines > 0 ? nullptr : "contains no log line so far";
}

void Follower::End() {
    if (analysis) {
        analysis->End();
    }
}

}  // namespace orv::log
