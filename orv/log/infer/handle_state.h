// Uses the results of the logged calls to infer which links and scanner sessions exist. At first,
// this is unknown, because links and sessions may be older than the log.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "orv/log/infer/call.h"

namespace orv::log {

// Sequence number of the start or end of a call. Comparing two shows whether calls overlap.
using Moment = std::uint64_t;

// The state of the links of an address, or of the session of a scannerId.
struct HandleState {
    int atLeast = 0;       // lower bound of the number of links or sessions
    bool noOther = false;  // true if `atLeast` is the exact number
    int creating = 0;      // running calls that may add a link or session
    int removing = 0;      // running calls that may remove a link or session
    int emptying = 0;      // running Start calls, which empty the session's list
    Moment lastAdded = 0;  // end of the latest call that may have added a link
    Moment lastRemoved = 0;
    std::int64_t listed = 0;  // lower bound of the number of devices in the session's list
    Moment lastEmptied = 0;

    Presence Now() const;
};

class HandleStates {
  public:
    struct Snapshot {
        Moment moment = 0;
        Presence presence = Presence::Unknown;
        std::int64_t listed = 0;
    };

    Snapshot Begin(const Subject& call);

    // Sets presence, indexListed and lastLink of `call`, for which Begin returned `begin`. Then
    // updates the state.
    void End(Call& call, const Snapshot& begin);

  private:
    HandleState& Of(const Subject& subject);
    // What other calls may have changed between a call's trace line and result line.
    struct Overlap {
        bool added, removed, emptied;
    };

    void LearnSession(const Call& call, HandleState& handle, const Overlap& others);
    void LearnLink(Call& call, HandleState& handle, const Overlap& others);

    std::unordered_map<std::uint64_t, HandleState> links;
    std::unordered_map<std::uint64_t, HandleState> sessions;
    Moment now = 1;
    int initializing = 0;
    Moment lastInitialized = 0;
};

}  // namespace orv::log
