#include "orv/log/presence.h"

#include <algorithm>

namespace orv::log {

namespace {

bool IsCreating(Function function) {
    return function == Function::Connect;
}

bool IsRemoving(Function function) {
    return function == Function::Disconnect || function == Function::Deinitialize;
}

// -1 without a failure line: the call was refused.
bool Refused(const Call& call) {
    return call.result == -1 && call.failures.count == 0;
}

bool Succeeded(const Call& call) {
    return call.result && *call.result >= 0;
}

}  // namespace

Presence Existence::Now() const {
    if (atLeast > 0) {
        return Presence::Present;
    }
    return noOther ? Presence::Absent : Presence::Unknown;
}

Existence& PresenceBook::Of(const Subject& subject) {
    return FactsOf(subject.function).family == Family::Link ? links[subject.handle]
                                                            : sessions[subject.handle];
}

PresenceBook::Snapshot PresenceBook::Begin(const Subject& call) {
    ++now;
    if (call.function == Function::Available) {
        return {};
    }
    if (call.function == Function::Initialize) {
        ++initializing;
        return {};
    }
    Existence& existence = Of(call);
    if (call.function == Function::Start) {
        existence.listed = 0;
        existence.lastEmptied = now;
        ++existence.emptying;
    }
    existence.creating += IsCreating(call.function) ? 1 : 0;
    existence.removing += IsRemoving(call.function) ? 1 : 0;
    const bool session = FactsOf(call.function).family == Family::Scanner;
    Presence presence = existence.Now();
    if (session && call.ScannerId() < 0) {
        presence = Presence::Absent;
    } else {
        const int creating = session ? initializing : existence.creating;
        const bool othersRemove =
            existence.removing > 0 && !(existence.removing == 1 && IsRemoving(call.function));
        const bool changes = (presence == Presence::Absent && creating > 0) ||
                             (presence == Presence::Present && othersRemove);
        presence = changes ? Presence::Unknown : presence;
    }
    return {now, presence, existence.listed};
}

void PresenceBook::End(Call& call, const Snapshot& begin) {
    ++now;
    if (call.subject.function == Function::Available) {
        return;
    }
    if (call.subject.function == Function::Initialize) {
        --initializing;
        lastInitialized = now;
        if (Succeeded(call)) {
            Existence& created = sessions[static_cast<std::uint32_t>(*call.result)];
            const bool removed = created.removing > 0 || created.lastRemoved > begin.moment;
            created.atLeast = removed ? 0 : 1;
            created.noOther = false;
            created.listed = 0;
            created.lastEmptied = now;
        }
        return;
    }
    Existence& existence = Of(call.subject);
    existence.creating -= IsCreating(call.subject.function) ? 1 : 0;
    existence.removing -= IsRemoving(call.subject.function) ? 1 : 0;
    existence.emptying -= call.subject.function == Function::Start ? 1 : 0;

    const bool session = FactsOf(call.subject.function).family == Family::Scanner;
    const bool added = session ? initializing > 0 || lastInitialized > begin.moment
                               : existence.creating > 0 || existence.lastAdded > begin.moment;
    const bool removed = existence.removing > 0 || existence.lastRemoved > begin.moment;
    const bool negative = session && call.subject.ScannerId() < 0;
    const bool changed = !negative && (begin.presence == Presence::Absent ? added : removed);
    call.presence = changed ? Presence::Unknown : begin.presence;
    call.indexListed = existence.lastEmptied <= begin.moment && call.subject.number >= 0 &&
                       call.subject.number < begin.listed;
    const Overlap others{added, removed,
                         existence.emptying > 0 || existence.lastEmptied > begin.moment};
    if (session) {
        LearnSession(call, existence, others);
    } else {
        LearnLink(call, existence, others);
    }
}

void PresenceBook::LearnSession(const Call& call, Existence& existence, const Overlap& others) {
    switch (call.subject.function) {
        case Function::Deinitialize:
            existence.atLeast = 0;
            existence.noOther = !others.added && (Succeeded(call) || Refused(call));
            existence.lastRemoved = now;
            return;
        case Function::Start:
            existence.listed = 0;
            existence.lastEmptied = now;
            break;
        case Function::GetDeviceCount:
            if (!others.emptied) {
                existence.listed = std::max(existence.listed, call.result.value_or(0));
            }
            break;
        case Function::GetDeviceInfo:
            if (Succeeded(call) && !others.emptied) {
                existence.listed = std::max(existence.listed, call.subject.number + 1);
            }
            if (Succeeded(call) && !others.removed) {
                existence.atLeast = 1;
            }
            return;  // its -1 has further reasons
        default:
            break;
    }
    if (Succeeded(call) && !others.removed) {
        existence.atLeast = 1;
    } else if (Refused(call) && !others.added) {
        existence.atLeast = 0;
        existence.noOther = true;
    }
}

void PresenceBook::LearnLink(Call& call, Existence& existence, const Overlap& others) {
    switch (call.subject.function) {
        case Function::Connect:
            existence.lastAdded = now;
            if (Succeeded(call) && !others.removed) {
                ++existence.atLeast;
            } else if (call.result != -1) {
                existence.noOther = false;
            }
            return;
        case Function::Disconnect:
            existence.lastRemoved = now;
            if (Refused(call) && !others.added) {
                existence.atLeast = 0;
                existence.noOther = true;
            } else if (Succeeded(call) || !call.result) {
                // One that may have failed may have left its link.
                existence.noOther = existence.noOther && (call.result || call.failures.count == 0);
                existence.atLeast = std::max(existence.atLeast - 1, 0);
                call.lastLink = existence.atLeast == 0;
            }
            return;
        default:
            break;
    }
    if (Succeeded(call) && existence.atLeast == 0 && !others.removed) {
        existence.atLeast = 1;
        existence.noOther = false;
    } else if (Refused(call) && call.subject.function == Function::Flush && !others.added) {
        existence.atLeast = 0;
        existence.noOther = true;
    }
}

}  // namespace orv::log
