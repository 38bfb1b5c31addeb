// Combines log lines into calls with results, failures and durations.
#pragma once

#include <bitset>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "orv/log/infer/call.h"
#include "orv/log/infer/device_history.h"
#include "orv/log/infer/handle_state.h"

namespace orv::log {

// Decides when a call without a result line counts as ended.
enum class Threads : std::uint8_t {
    One,   // a call ends before the next one begins
    Many,  // calls may overlap
};

// The functions for which the host writes result lines.
using ResultUse = std::bitset<FunctionCount>;

class CallTracker {
  public:
    // A call of a function in `results` ends only with its result line; `threads` decides when
    // other calls end. `onCall` receives each ended call, `onForeign` each failure line
    // outside all calls.
    CallTracker(ResultUse results, Threads threads, std::function<void(const Call&)> onCall,
                std::function<void(const Entry&)> onForeign);

    void Add(const Entry& entry);
    void End();

    // Returns the line number of the oldest open call, or the largest number if none is open.
    std::uint64_t OldestOpen() const;

    // Returns the number of result lines whose calls began before the log.
    std::uint64_t UnmatchedResults() const { return unmatchedResults; }

  private:
    struct OpenCall {
        Call call;
        HandleStates::Snapshot begin;
        std::uint64_t failuresBefore = 0;  // `failureCount` when the call began
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
    // Open calls in the order of their trace lines. Pointers are cheap to move on erasure.
    std::vector<std::unique_ptr<OpenCall>> open;
    std::size_t withFailure = 0;  // the first `withFailure` open calls have a failure line
    std::uint64_t failureCount = 0;
    // Number of the last failure line that more than one call may have written.
    std::uint64_t lastShared = 0;
    std::deque<LockHold> holds;  // periods in which ended calls held a lock
    HandleStates book;
    DeviceHistory devices;
    std::int64_t latest = 0;
    std::optional<std::int64_t> logBegin;
    bool callbackSeen = false;
    std::uint64_t scansStarted = 0;  // number of Start calls, whose callbacks can fail later
    std::uint64_t linksStarted = 0;
    std::uint64_t unmatchedResults = 0;
};

}  // namespace orv::log
