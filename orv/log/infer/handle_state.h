// Derives from results which links and scanner sessions exist. A log may begin after the host's
// first call, so every state is unknown at first.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "orv/log/infer/call.h"

namespace orv::log {

// A position in the order in which calls begin and end. Two calls overlap if one ends after the
// other begins.
using Moment = std::uint64_t;

// The state of an address, which may have several links, or of a scannerId.
struct HandleState {
    int atLeast = 0;       // minimum number of links or sessions
    bool noOther = false;  // there are at most `atLeast`
    int creating = 0;      // running calls that may add a link or session
    int removing = 0;      // running calls that may remove a link or session
    int emptying = 0;      // running Start calls, which empty the session's list
    Moment lastAdded = 0;  // when the latest call that may have added one ended
    Moment lastRemoved = 0;
    std::int64_t listed = 0;  // minimum length of a session's list
    Moment lastEmptied = 0;

    Presence Now() const;
};

class HandleStates {
  public:
    // The state of a handle when a call began.
    struct Snapshot {
        Moment moment = 0;
        Presence presence = Presence::Unknown;
        std::int64_t listed = 0;
    };

    Snapshot Begin(const Subject& call);

    // Sets presence, indexListed and lastLink of `call`, then updates the state. Begin returned
    // `begin` for this call.
    void End(Call& call, const Snapshot& begin);

  private:
    HandleState& Of(const Subject& subject);
    // Changes by other calls during a call, possibly between its return and its result line.
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
