// Converts a log to calls, and to notes that belong to no single call.
#pragma once

#include <cstdint>
#include <string_view>

#include "orv/log/infer/call_tracker.h"
#include "orv/log/infer/note_finder.h"
#include "orv/log/read/lines.h"

namespace orv::log {

// Receives the results of an analysis. `entry.words` points into the bytes passed to
// Analysis::Feed.
class Listener {
  public:
    virtual ~Listener() = default;
    virtual void OnEntry(const Entry& entry) { (void)entry; }
    virtual void OnCall(const Call& call) { (void)call; }
    virtual void OnNote(const Note& note) { (void)note; }
};

struct Totals {
    std::uint64_t lines = 0;  // number of complete lines with a time stamp
    std::int32_t firstStamp = 0;
    std::int32_t lastStamp = 0;
    std::int64_t firstTime = 0;
    std::int64_t lastTime = 0;
};

// Determines for which functions the host writes result lines.
class ResultFinder {
  public:
    // Works like Analysis::Feed.
    std::size_t Feed(std::string_view bytes, bool isEnd = true);
    ResultUse Use() const;

  private:
    std::uint64_t calls[FunctionCount] = {}, results[FunctionCount] = {};
};

class Analysis {
  public:
    Analysis(Listener& listener, ResultUse results, Threads threads);

    // Returns the number of used bytes. Pass the unused ones again, followed by the next bytes.
    // Ignores an incomplete last line of the log.
    std::size_t Feed(std::string_view bytes, bool isEnd = true);
    void End();

    const Totals& Sums() const { return totals; }

    // Returns the line number of the oldest call that the listener has not received yet.
    std::uint64_t CompleteUntil() const { return calls.OldestOpen(); }

  private:
    void Take(const Line& line);
    void Report(NoteKind kind, std::uint64_t count);

    Listener& listener;
    Timeline timeline;
    NoteFinder notes;
    CallTracker calls;
    Totals totals;
    std::uint64_t nextLine = 1;
    std::uint64_t strayLines = 0;
    bool cut = false;
};

}  // namespace orv::log
