#include "orv/log/follower.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "orv/log/log_bytes.h"

namespace orv::log {

namespace {

constexpr std::size_t TailLength = 64;

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
    const std::optional<std::string> before = ReadBytes(path, position - tail.size());
    return before && !before->starts_with(tail);
}

Follower::Found Follower::Poll() {
    if (WasEmptied()) {
        End();
        Restart();
        return Found::Emptied;
    }
    const std::optional<std::string> added = ReadBytes(path, position);
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
    const std::size_t end = unfinished.rfind('\n');
    if (end == unfinished.npos) {
        return Found::Nothing;
    }
    const std::string lines = unfinished.substr(0, end + 1);
    unfinished.erase(0, end + 1);
    if (!analysis) {
        analysis = std::make_unique<Analysis>(listener, FindResults(lines), threads);
    }
    analysis->Feed(lines);
    return Found::Lines;
}

void Follower::End() {
    if (analysis) {
        analysis->End();
    }
}

}  // namespace orv::log
