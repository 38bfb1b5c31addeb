// The entries of a log put together: each call with its result, its failures and its time.
#pragma once

#include <bitset>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

#include "orv/log/call.h"
#include "orv/log/presence.h"

namespace orv::log {

// How far the order of a log's lines tells when a call ended.
enum class Threads : std::uint8_t {
    One,   // the next call shows that the one before has ended
    Many,  // calls may overlap
};

// The functions for whose calls the host writes result lines.
using ResultUse = std::bitset<FunctionCount>;

class History {
  public:
    // A call of a function in `results` has ended only when its result line is there. Of others the
    // log does not tell which thread made them, and `threads` says what to assume. `onCall` is
    // called for each call when it has ended, `onForeign` for a failure line that was written while
    // no call ran, by a callback.
    History(ResultUse results, Threads threads, std::function<void(const Call&)> onCall,
            std::function<void(const Entry&)> onForeign);

    void Add(const Entry& entry);
    // Ends the calls that are still open.
    void End();

    // Result lines of calls that began before the log.
    std::uint64_t UnmatchedResults() const { return unmatchedResults; }

  private:
    struct OpenCall {
        Call call;
        PresenceBook::Snapshot begin;
    };
    struct LockHold {
        Family family;
        std::int64_t from, to;
    };

    void AddCall(const Entry& entry);
    void AddResult(const Entry& entry);
    void AddFailure(const Entry& entry);
    void AddNotification(const Entry& entry);
    void EndWhatMustHaveEnded(std::int64_t time);
    void Finish(std::size_t index, std::int64_t end);
    std::int64_t LockWaitOf(const Call& call, std::int64_t end) const;
    bool WritesResults(Function function) const;
    bool CallbackMayFail(const OpenCall& opened) const;
    void Conclude(Call& call) const;

    ResultUse results;
    Threads threads;
    std::function<void(const Call&)> onCall;
    std::function<void(const Entry&)> onForeign;
    std::vector<OpenCall> open;  // in the order of their trace lines
    std::deque<LockHold> holds;  // of calls that have ended
    PresenceBook book;
    std::int64_t latest = 0;
    std::optional<std::int64_t> logBegin;
    bool callbackSeen = false;
    std::uint64_t scansStarted = 0;  // Start and Connect leave handlers that may fail
    std::uint64_t linksStarted = 0;
    std::uint64_t unmatchedResults = 0;
};

}  // namespace orv::log
