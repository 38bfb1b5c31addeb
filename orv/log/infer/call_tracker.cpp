#include "orv/log/infer/call_tracker.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace orv::log {

namespace {

// If a call began more than this many ms before the first log line, the log lacks its trace line.
constexpr std::int64_t BeforeLog = 100;

// If calls may overlap, a call without a result line counts as ended after this many ms. This is
// enough for several timeouts and for closing links.
constexpr std::int64_t Longest = 15'000;

// If this many calls are open, the oldest one counts as ended. No host has so many threads.
constexpr std::size_t MostOpen = 200;
constexpr std::size_t MostHolds = 200;

// Limits forged failure texts, because each open call stores one. The library's texts are shorter.
constexpr std::size_t LongestFailureText = 120;

bool IsOfAddress(const Call& call, std::uint64_t address) {
    return call.subject.function == Function::Connect && call.subject.handle == address;
}

}  // namespace

CallTracker::CallTracker(ResultUse resultUse, Threads hostThreads,
                         std::function<void(const Call&)> callSink,
                         std::function<void(const Entry&)> foreignSink)
    : results(resultUse),
      threads(hostThreads),
      onCall(std::move(callSink)),
      onForeign(std::move(foreignSink)) {}

void CallTracker::Add(const Entry& entry) {
    logBegin = logBegin.value_or(entry.time);
    latest = std::max(latest, entry.time);
    switch (entry.kind) {
        case Kind::Call:
            AddCall(entry);
            break;
        case Kind::Result:
            AddResult(entry);
            break;
        case Kind::Failure:
            AddFailure(entry);
            break;
        case Kind::Notification:
            AddNotification(entry);
            callbackSeen = true;
            break;
        case Kind::Advertisement:
            devices.AddAdvertisement(entry.subject.handle);
            callbackSeen = true;
            break;
        case Kind::Host:
            break;
    }
}

void CallTracker::AddCall(const Entry& entry) {
    EndWhatMustHaveEnded(entry.time);
    if (open.size() >= MostOpen) {
        Finish(0, entry.time);
    }
    auto opened = std::make_unique<OpenCall>();
    opened->call.subject = entry.subject;
    opened->call.stamp = entry.stamp;
    opened->call.start = entry.time;
    opened->call.line = entry.line;
    opened->call.device = devices.Before(entry.subject, entry.time);
    opened->begin = book.Begin(entry.subject);
    opened->failuresBefore = failureCount;
    open.push_back(std::move(opened));
    scansStarted += entry.subject.function == Function::Start ? 1 : 0;
    linksStarted += entry.subject.function == Function::Connect ? 1 : 0;
}

// Ends calls without result lines. Only the trace line of a later call shows that they have ended.
void CallTracker::EndWhatMustHaveEnded(std::int64_t time) {
    for (std::size_t index = 0; index < open.size();) {
        Call& call = open[index]->call;
        if (WritesResults(call.subject.function)) {
            ++index;
            continue;
        }
        const std::int64_t passed = std::max<std::int64_t>(time - call.start, 0);
        if (threads == Threads::One) {
            call.duration.atMost = passed;
        } else if (passed <= Longest) {
            ++index;
            continue;
        }
        Finish(index, time);
    }
}

void CallTracker::AddResult(const Entry& entry) {
    // A growing log may show only now that the host writes result lines for this function.
    results.set(static_cast<std::size_t>(entry.subject.function));
    const bool inLog = entry.time - entry.duration >= *logBegin - BeforeLog;
    std::size_t best = open.size();
    std::int64_t bestGap = std::numeric_limits<std::int64_t>::max();
    for (std::size_t index = 0; index < open.size(); ++index) {
        const Call& call = open[index]->call;
        const std::int64_t gap = std::abs(call.start + entry.duration - entry.time);
        if (inLog && call.subject == entry.subject && gap < bestGap) {
            best = index;
            bestGap = gap;
        }
    }
    if (best == open.size()) {
        ++unmatchedResults;
        return;
    }
    Call& call = open[best]->call;
    call.result = static_cast<std::int32_t>(entry.number);
    call.resultLogged = true;
    call.duration = {entry.duration, entry.duration};
    Finish(best, entry.time);
}

void CallTracker::AddFailure(const Entry& entry) {
    if (open.empty()) {
        onForeign(entry);
        return;
    }
    ++failureCount;
    // Stores only the first failure line in each open call. If every line changed all open calls,
    // many open calls would take too long.
    for (; withFailure < open.size(); ++withFailure) {
        Call& call = open[withFailure]->call;
        call.failures.text = entry.words.substr(0, LongestFailureText);
        call.failures.systemCallFailed = entry.words == "unknown type";
        call.failures.outOfMemory = entry.words == "bad allocation";
        call.failures.first = std::max<std::int64_t>(entry.time - call.start, 0);
    }
    if (open.size() > 1) {
        lastShared = failureCount;
    } else if (CallbackMayFail(*open.front())) {
        open.front()->call.failures.owner = Owner::ThisOrCallback;
    }
}

// Returns whether a callback may have written the failure line. A callback can fail before its
// trace line, so its scan or link is unknown and may be older than the log.
bool CallTracker::CallbackMayFail(const OpenCall& opened) const {
    const Call& call = opened.call;
    const Function function = call.subject.function;
    const bool starts = function == Function::Start || function == Function::Connect;
    // Without result lines, this call may have returned already, and then a callback of its own
    // scan or link may have failed.
    const std::uint64_t own = starts && WritesResults(function) ? 1 : 0;
    const bool mayUseOlder = function != Function::Connect &&
                             FactsOf(function).traces != Traces::Nothing &&
                             opened.begin.presence == Presence::Unknown;
    return callbackSeen || mayUseOlder || scansStarted + linksStarted > own ||
           failureCount - opened.failuresBefore > (function == Function::Connect ? 3U : 1U);
}

void CallTracker::AddNotification(const Entry& entry) {
    for (const auto& opened : open) {
        if (IsOfAddress(opened->call, entry.subject.handle)) {
            ++opened->call.notifications;
            opened->call.notifiedBytes += entry.number;
        }
    }
}

// Sets a missing result to -1 if the arguments or a failure line prove that the call failed.
void CallTracker::Conclude(Call& call) const {
    const Subject& subject = call.subject;
    const bool session = FactsOf(subject.function).family == Family::Scanner &&
                         FactsOf(subject.function).traces != Traces::Nothing;
    const bool refused = (session && subject.ScannerId() < 0) ||
                         (subject.function == Function::Send && subject.number < 0) ||
                         (subject.function == Function::GetDeviceInfo && subject.number < 0);
    const bool failed = call.failures.count > 0 && call.failures.owner == Owner::ThisCall;
    if (!call.result && (refused || failed)) {
        call.result = -1;
    }
}

std::int64_t CallTracker::LockWaitOf(const Call& call, std::int64_t end) const {
    const Family family = FactsOf(call.subject.function).family;
    std::int64_t wait = 0;
    const auto add = [&](std::int64_t from, std::int64_t to) {
        wait += std::max<std::int64_t>(std::min(to, end) - std::max(from, call.start), 0);
    };
    for (const LockHold& hold : holds) {
        if (hold.family == family) {
            add(hold.from, hold.to);
        }
    }
    for (const auto& other : open) {
        const FunctionFacts& facts = FactsOf(other->call.subject.function);
        if (facts.family == family && facts.holdsLock) {
            add(other->call.start, end);
        }
    }
    return wait;
}

void CallTracker::Finish(std::size_t index, std::int64_t end) {
    const std::unique_ptr<OpenCall> finished = std::move(open[index]);
    open.erase(open.begin() + static_cast<std::ptrdiff_t>(index));
    withFailure -= index < withFailure ? 1 : 0;
    Call& call = finished->call;
    call.failures.count = static_cast<std::int64_t>(failureCount - finished->failuresBefore);
    if (lastShared > finished->failuresBefore) {
        call.failures.owner = Owner::ThisOrOther;
    }
    if (call.failures.count > 0 && call.failures.owner == Owner::ThisCall) {
        call.duration.atLeast = std::max(call.duration.atLeast, call.failures.first);
    }
    call.lockWait = LockWaitOf(call, end);
    Conclude(call);
    book.End(call, finished->begin);
    devices.Add(call);

    const FunctionFacts& facts = FactsOf(call.subject.function);
    if (facts.holdsLock) {
        holds.push_back({facts.family, call.start, end});
    }
    while (!holds.empty() && (open.empty() || holds.size() > MostHolds ||
                              holds.front().to < open.front()->call.start)) {
        holds.pop_front();
    }
    onCall(call);
}

std::uint64_t CallTracker::OldestOpen() const {
    return open.empty() ? std::numeric_limits<std::uint64_t>::max() : open.front()->call.line;
}

bool CallTracker::WritesResults(Function function) const {
    return results.test(static_cast<std::size_t>(function));
}

void CallTracker::End() {
    while (!open.empty()) {
        Call& call = open.front()->call;
        const bool resultMissing = WritesResults(call.subject.function);
        call.logEnded = resultMissing || threads == Threads::One;
        call.isHanging = resultMissing;
        if (resultMissing) {
            call.duration.atLeast = std::max<std::int64_t>(latest - call.start, 0);
        }
        Finish(0, latest);
    }
}

}  // namespace orv::log
