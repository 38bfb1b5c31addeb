#include "orv/log/history.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace orv::log {

namespace {

// A result line that says that its call began this long before the log belongs to no call in it.
constexpr std::int64_t BeforeLog = 100;

// A call that is not one of several waits of 2000 ms, and closing what they opened, has ended by
// then: where calls overlap and no result line tells, this is the longest that one is kept open.
constexpr std::int64_t Longest = 15'000;

// More calls than a host has threads: their result lines will not come.
constexpr std::size_t MostOpen = 500;
constexpr std::size_t MostHolds = 500;

bool IsOfAddress(const Call& call, std::uint64_t address) {
    return call.subject.function == Function::Connect && call.subject.handle == address;
}

}  // namespace

History::History(ResultUse resultUse, Threads hostThreads,
                 std::function<void(const Call&)> callSink,
                 std::function<void(const Entry&)> foreignSink)
    : results(resultUse),
      threads(hostThreads),
      onCall(std::move(callSink)),
      onForeign(std::move(foreignSink)) {}

void History::Add(const Entry& entry) {
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
            [[fallthrough]];
        case Kind::Advertisement:
            callbackSeen = true;
            break;
        case Kind::Host:
            break;
    }
}

void History::AddCall(const Entry& entry) {
    EndWhatMustHaveEnded(entry.time);
    if (open.size() >= MostOpen) {
        Finish(0, entry.time);
    }
    OpenCall opened;
    opened.call.subject = entry.subject;
    opened.call.stamp = entry.stamp;
    opened.call.start = entry.time;
    opened.call.line = entry.line;
    opened.begin = book.Begin(entry.subject);
    open.push_back(std::move(opened));
    scansStarted += entry.subject.function == Function::Start ? 1 : 0;
    linksStarted += entry.subject.function == Function::Connect ? 1 : 0;
}

// Where no result line will come, the next call is the first sign that one has ended.
void History::EndWhatMustHaveEnded(std::int64_t time) {
    for (std::size_t index = 0; index < open.size();) {
        Call& call = open[index].call;
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

void History::AddResult(const Entry& entry) {
    results.set(static_cast<std::size_t>(entry.subject.function));  // late in a log that grows
    const bool inLog = entry.time - entry.duration >= *logBegin - BeforeLog;
    std::size_t best = open.size();
    std::int64_t bestGap = std::numeric_limits<std::int64_t>::max();
    for (std::size_t index = 0; index < open.size(); ++index) {
        const Call& call = open[index].call;
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
    Call& call = open[best].call;
    call.result = static_cast<std::int32_t>(entry.number);
    call.resultLogged = true;
    call.duration = {entry.duration, entry.duration};
    Finish(best, entry.time);
}

void History::AddFailure(const Entry& entry) {
    if (open.empty()) {
        onForeign(entry);
        return;
    }
    for (OpenCall& opened : open) {
        Call& call = opened.call;
        if (call.failures.count++ == 0) {
            call.failures.text = entry.words;
            call.failures.unknownType = entry.words == "unknown type";
            call.failures.outOfMemory = entry.words == "bad allocation";
            call.failures.first = std::max<std::int64_t>(entry.time - call.start, 0);
        }
        if (open.size() > 1) {
            call.failures.owner = Owner::ThisOrOther;
        } else if (call.failures.owner == Owner::ThisCall && CallbackMayFail(opened)) {
            call.failures.owner = Owner::ThisOrCallback;
        }
    }
}

// A callback may fail before its trace line, so one that nobody has seen is a suspect as soon as a
// scan or a link may deliver. These may be older than the log: then a callback's line shows it, or
// a call that uses what the log does not show to be absent.
bool History::CallbackMayFail(const OpenCall& opened) const {
    const Call& call = opened.call;
    const Function function = call.subject.function;
    const bool starts = function == Function::Start || function == Function::Connect;
    // Without a result line the failure may have come long after what this call has started.
    const std::uint64_t own = starts && WritesResults(function) ? 1 : 0;
    const bool mayUseOlder = function != Function::Connect &&
                             FactsOf(function).traces != Traces::Nothing &&
                             opened.begin.presence == Presence::Unknown;
    return callbackSeen || mayUseOlder || scansStarted + linksStarted > own ||
           call.failures.count > (function == Function::Connect ? 3 : 1);
}

void History::AddNotification(const Entry& entry) {
    for (OpenCall& opened : open) {
        if (IsOfAddress(opened.call, entry.subject.handle)) {
            ++opened.call.notifications;
            opened.call.notifiedBytes += entry.number;
        }
    }
}

// What follows from the arguments or from a failure line, without a result line.
void History::Conclude(Call& call) const {
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

std::int64_t History::LockWaitOf(const Call& call, std::int64_t end) const {
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
    for (const OpenCall& other : open) {
        const FunctionFacts& facts = FactsOf(other.call.subject.function);
        if (&other.call != &call && facts.family == family && facts.holdsLock) {
            add(other.call.start, end);
        }
    }
    return wait;
}

void History::Finish(std::size_t index, std::int64_t end) {
    OpenCall finished = std::move(open[index]);
    open.erase(open.begin() + static_cast<std::ptrdiff_t>(index));
    Call& call = finished.call;
    if (call.failures.count > 0 && call.failures.owner == Owner::ThisCall) {
        call.duration.atLeast = std::max(call.duration.atLeast, call.failures.first);
    }
    call.lockWait = LockWaitOf(call, end);
    Conclude(call);
    book.End(call, finished.begin);

    const FunctionFacts& facts = FactsOf(call.subject.function);
    if (facts.holdsLock) {
        holds.push_back({facts.family, call.start, end});
    }
    while (!holds.empty() && (open.empty() || holds.size() > MostHolds ||
                              holds.front().to < open.front().call.start)) {
        holds.pop_front();
    }
    onCall(call);
}

bool History::WritesResults(Function function) const {
    return results.test(static_cast<std::size_t>(function));
}

void History::End() {
    while (!open.empty()) {
        Call& call = open.front().call;
        const bool resultMissing = WritesResults(call.subject.function);
        call.logEnded = resultMissing || threads == Threads::One;
        if (resultMissing) {
            call.duration.atLeast = std::max<std::int64_t>(latest - call.start, 0);
        }
        Finish(0, latest);
    }
}

}  // namespace orv::log
