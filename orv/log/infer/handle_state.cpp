#include "orv/log/infer/handle_state.h"

#include <algorithm>

namespace orv::log {

namespace {

bool IsCreating(Function function) {
    return function == Function::Connect;
}

bool IsRemoving(Function function) {
    return function == Function::Disconnect || function == Function::Deinitialize;
}

bool Refused(const Call& call) {
    return call.result == -1 && call.failures.count == 0;
}

bool Succeeded(const Call& call) {
    return call.result && *call.result >= 0;
}

}  // namespace

Presence HandleState::Now() const {
    if (atLeast > 0) {
        return Presence::Present;
    }
    return noOther ? Presence::Absent : Presence::Unknown;
}

HandleState& HandleStates::Of(const Subject& subject) {
    return FactsOf(subject.function).family == Family::Link ? links[subject.handle]
                                                            : sessions[subject.handle];
}

HandleStates::Snapshot HandleStates::Begin(const Subject& call) {
    ++now;
    if (call.function == Function::Available) {
        return {};
    }
    if (call.function == Function::Initialize) {
        ++initializing;
        return {};
    }
    HandleState& handle = Of(call);
    if (call.function == Function::Start) {
        handle.listed = 0;
        handle.lastEmptied = now;
        ++handle.emptying;
    }
    // Counts the running calls, including this one, that may add or remove a link or session.
    handle.creating += IsCreating(call.function) ? 1 : 0;
    handle.removing += IsRemoving(call.function) ? 1 : 0;
    const bool session = FactsOf(call.function).family == Family::Scanner;
    Presence presence = handle.Now();
    if (session && call.ScannerId() < 0) {
        // The library never returns a negative scannerId.
        presence = Presence::Absent;
    } else {
        const int creating = session ? initializing : handle.creating;
        // Another open call may have added or removed the link or session. If only this call
        // removes it, it exists until the end of this call.
        const bool othersRemove =
            handle.removing > 0 && !(handle.removing == 1 && IsRemoving(call.function));
        const bool changes = (presence == Presence::Absent && creating > 0) ||
                             (presence == Presence::Present && othersRemove);
        presence = changes ? Presence::Unknown : presence;
    }
    return {now, presence, handle.listed};
}

void HandleStates::End(Call& call, const Snapshot& begin) {
    ++now;
    if (call.subject.function == Function::Available) {
        return;
    }
    if (call.subject.function == Function::Initialize) {
        --initializing;
        lastInitialized = now;
        if (Succeeded(call)) {
            HandleState& created = sessions[static_cast<std::uint32_t>(*call.result)];
            // Another thread can deinitialize the session before this result line is written.
            const bool removed = created.removing > 0 || created.lastRemoved > begin.moment;
            created.atLeast = removed ? 0 : 1;
            created.noOther = false;
            created.listed = 0;
            created.lastEmptied = now;
        }
        return;
    }
    HandleState& handle = Of(call.subject);
    handle.creating -= IsCreating(call.subject.function) ? 1 : 0;
    handle.removing -= IsRemoving(call.subject.function) ? 1 : 0;
    handle.emptying -= call.subject.function == Function::Start ? 1 : 0;

    const bool session = FactsOf(call.subject.function).family == Family::Scanner;
    const bool added = session ? initializing > 0 || lastInitialized > begin.moment
                               : handle.creating > 0 || handle.lastAdded > begin.moment;
    const bool removed = handle.removing > 0 || handle.lastRemoved > begin.moment;
    const bool negative = session && call.subject.ScannerId() < 0;
    // Unknown if another call may have added or removed the link or session during this call.
    const bool changed = !negative && (begin.presence == Presence::Absent ? added : removed);
    call.presence = changed ? Presence::Unknown : begin.presence;
    // Between two Start calls, a session's list only grows, so a valid index remains valid.
    call.indexListed = handle.lastEmptied <= begin.moment && call.subject.number >= 0 &&
                       call.subject.number < begin.listed;
    const Overlap others{added, removed, handle.emptying > 0 || handle.lastEmptied > begin.moment};
    if (session) {
        LearnSession(call, handle, others);
    } else {
        LearnLink(call, handle, others);
    }
}

void HandleStates::LearnSession(const Call& call, HandleState& handle, const Overlap& others) {
    switch (call.subject.function) {
        case Function::Deinitialize:
            handle.atLeast = 0;
            // The session is gone after a success, and did not exist before a rejection. It may
            // exist after any other failure.
            handle.noOther = !others.added && (Succeeded(call) || Refused(call));
            handle.lastRemoved = now;
            return;
        case Function::Start:
            handle.listed = 0;
            handle.lastEmptied = now;
            break;
        case Function::GetDeviceCount:
            if (!others.emptied) {
                handle.listed = std::max<std::int64_t>(handle.listed, call.result.value_or(0));
            }
            break;
        case Function::GetDeviceInfo:
            if (Succeeded(call) && !others.emptied) {
                handle.listed = std::max(handle.listed, std::int64_t{call.subject.number} + 1);
            }
            if (Succeeded(call) && !others.removed) {
                handle.atLeast = 1;
            }
            return;  // -1 proves nothing, because the index or pointer may be wrong
        default:
            break;
    }
    if (Succeeded(call) && !others.removed) {
        handle.atLeast = 1;
    } else if (Refused(call) && !others.added) {
        handle.atLeast = 0;
        handle.noOther = true;
    }
}

void HandleStates::LearnLink(Call& call, HandleState& handle, const Overlap& others) {
    switch (call.subject.function) {
        case Function::Connect:
            handle.lastAdded = now;
            if (Succeeded(call) && !others.removed) {
                ++handle.atLeast;
            } else if (call.result != -1) {
                // Connect may have opened a link, which another call may have closed.
                handle.noOther = false;
            }
            return;
        case Function::Disconnect:
            handle.lastRemoved = now;
            if (Refused(call) && !others.added) {
                handle.atLeast = 0;
                handle.noOther = true;
            } else if (Succeeded(call) || !call.result) {
                // If Disconnect may have failed, the link may still exist.
                handle.noOther = handle.noOther && (call.result || call.failures.count == 0);
                handle.atLeast = std::max(handle.atLeast - 1, 0);
                call.lastLink = handle.atLeast == 0;
            }
            return;
        default:
            break;
    }
    // A success proves that the link or session exists. A rejected Flush proves that there is no
    // link; Send and Receive can fail for other reasons.
    if (Succeeded(call) && handle.atLeast == 0 && !others.removed) {
        handle.atLeast = 1;
        handle.noOther = false;
    } else if (Refused(call) && call.subject.function == Function::Flush && !others.added) {
        handle.atLeast = 0;
        handle.noOther = true;
    }
}

}  // namespace orv::log
