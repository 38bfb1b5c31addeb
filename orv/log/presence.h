// Which links and scanner sessions there are, as far as the results in a log prove it.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "orv/log/call.h"

namespace orv::log {

// A point in the order of the log's lines.
using Moment = std::uint64_t;

// One address or one scannerId.
struct Existence {
    int atLeast = 0;       // so many there are
    bool noOther = false;  // and no more than these
    int creating = 0;      // calls under way that may add one
    int removing = 0;      // calls under way that may take one away
    int emptying = 0;      // calls under way that empty its list
    Moment lastAdded = 0;  // when such a call last ended
    Moment lastRemoved = 0;
    std::int32_t listed = 0;  // of a session: its list is at least that long
    Moment lastEmptied = 0;

    Presence Now() const;
};

class PresenceBook {
  public:
    // What was known when a call began, to be compared with what happened until its end.
    struct Snapshot {
        Moment moment = 0;
        Presence presence = Presence::Unknown;
        std::int32_t listed = 0;
    };

    Snapshot Begin(const Subject& call);

    // Sets what of `call` depends on other calls, then learns from its result.
    void End(Call& call, const Snapshot& begin);

  private:
    Existence& Of(const Subject& subject);
    // What other calls may have done while one ran. A result tells of a moment in that time, and
    // what it shows may have been undone before its line was written.
    struct Overlap {
        bool added, removed, emptied;
    };

    void LearnSession(const Call& call, Existence& existence, const Overlap& others);
    void LearnLink(Call& call, Existence& existence, const Overlap& others);

    std::unordered_map<std::uint64_t, Existence> links;
    std::unordered_map<std::uint64_t, Existence> sessions;
    Moment now = 1;
    int initializing = 0;
    Moment lastInitialized = 0;
};

}  // namespace orv::log
