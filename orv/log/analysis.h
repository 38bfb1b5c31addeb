// A log from its bytes to calls and notes.
#pragma once

#include <cstdint>
#include <string_view>

#include "orv/log/history.h"
#include "orv/log/lines.h"
#include "orv/log/note.h"
#include "orv/log/observer.h"
#include "orv/log/timeline.h"

namespace orv::log {

// Who wants to know. `entry.words` lives as long as the bytes that were fed.
class Listener {
  public:
    virtual ~Listener() = default;
    virtual void OnEntry(const Entry& entry) { (void)entry; }
    virtual void OnCall(const Call& call) { (void)call; }
    virtual void OnNote(const Note& note) { (void)note; }
};

struct Totals {
    std::uint64_t lines = 0;  // that begin with a stamp and are complete
    std::int32_t firstStamp = 0;
    std::int32_t lastStamp = 0;
    std::int64_t firstTime = 0;
    std::int64_t lastTime = 0;
};

// For which functions the log has the host's result lines.
ResultUse FindResults(std::string_view bytes);

class Analysis {
  public:
    Analysis(Listener& listener, ResultUse results, Threads threads);

    // The next lines of the log. What follows the last line end is a line that was cut.
    void Feed(std::string_view bytes);
    void End();

    const Totals& Sums() const { return totals; }

  private:
    void Take(const Line& line);
    void Report(NoteKind kind, std::uint64_t count);

    Listener& listener;
    Timeline timeline;
    Observer observer;
    History history;
    Totals totals;
    std::uint64_t nextLine = 1;
    std::uint64_t strayLines = 0;
    bool cut = false;
};

}  // namespace orv::log
