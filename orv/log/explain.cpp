#include "orv/log/explain.h"

#include <limits>

#include "orv/log/wait_times.h"

namespace orv::log {

namespace {

// A success that took this long is worth a word.
constexpr std::int64_t Slow = 1000;

// What is refused without any wait is not seen to take longer.
constexpr std::int64_t Immediate = 250;

// Collects suspects; one without a single possible step is none.
struct Collector {
    const Call& call;
    Suspects suspects;

    void Add(Cause cause, Steps steps = 0) {
        for (Suspect& known : suspects) {
            if (known.cause == cause) {
                known.steps = static_cast<Steps>(known.steps | steps);
                return;
            }
        }
        suspects.push_back({cause, steps});
    }
    void AddSteps(Cause cause, Steps steps) {
        if (steps != 0) {
            Add(cause, steps);
        }
    }

    bool HasFailure() const { return call.failures.count > 0; }
    // A failure line that surely is this call's own leaves no room for a silent refusal.
    bool MayBeSilent() const { return !HasFailure() || call.failures.owner != Owner::ThisCall; }
    bool MayBeImmediate() const { return MayBeSilent() && Told(call.OwnAtLeast()) <= Immediate; }
    // More than all its waits take: a machine that slept, or a call into the system without limit.
    bool IsBeyondWaits() const { return Told(call.OwnAtLeast()) < call.OwnAtLeast(); }
    // How much of a time the waits must have taken. One beyond them all tells nothing of any.
    std::int64_t Told(std::int64_t time) const {
        const int waits = FactsOf(call.subject.function).waits;
        return waits > 0 && time > waits * (WaitLimit + Late) ? 0 : time;
    }
    Cause Raised() const {
        if (call.failures.unknownType) {
            return Cause::SystemFailure;
        }
        return call.failures.outOfMemory ? Cause::OutOfMemory : Cause::StandardFailure;
    }
    // The time until the operation that failed had ended.
    WaitTimes Until() const {
        if (HasFailure() && !MayBeSilent()) {
            return UntilFailure();
        }
        return {Told(call.OwnAtLeast()),
                call.duration.atMost.value_or(std::numeric_limits<std::int64_t>::max())};
    }
    WaitTimes UntilFailure() const { return {Told(call.failures.first), call.failures.first}; }
};

void ExplainAvailable(Collector& found) {
    if (found.HasFailure()) {
        found.AddSteps(found.Raised(), found.UntilFailure().Answered(2));
    }
    if (!found.MayBeSilent()) {
        return;
    }
    const Steps answered = found.Until().Answered(2);
    found.AddSteps(Cause::LimitPassed, found.Until().Missed(2));
    if (answered & 2) {
        found.Add(Cause::NoRadioOn);
    }
    if (answered & 1) {
        found.Add(Cause::NoAdapter);
    }
    found.AddSteps(Cause::Ended, answered);
}

constexpr Steps WithService = 0b11110;  // from the second wait on something is there to be closed
constexpr Steps WithList = 0b01010;     // the lookups that give a list

// What connect gives up on without a line of its own.
void AddSilentConnect(Collector& found, const WaitTimes& times, Steps among) {
    const Steps answered = times.Answered(5) & among;
    found.AddSteps(Cause::LimitPassed, times.Missed(5) & among);
    if (answered & 1) {
        found.Add(Cause::UnknownDevice);
    }
    found.AddSteps(Cause::Refused, answered & WithService);
    found.AddSteps(Cause::Ended, answered);
}

void ExplainConnect(Collector& found) {
    if (found.HasFailure()) {
        const WaitTimes times = found.UntilFailure();
        const Steps answered = times.Answered(5);
        found.AddSteps(found.Raised(), answered);
        if (found.call.failures.unknownType) {
            found.AddSteps(Cause::NotOffered, answered & WithList);
        }
        found.Add(Cause::ClosingFailed);
        AddSilentConnect(found, times, WithService);
    }
    if (found.MayBeSilent()) {
        AddSilentConnect(found, found.Until(), 0b11111);
    }
    const bool exact = found.call.duration.Exact();
    if (exact && found.call.duration.atLeast > Immediate) {
        found.Add(Cause::ClosingSlow);
    }
}

void ExplainSend(Collector& found) {
    if (found.call.subject.number < 0) {
        found.Add(Cause::NegativeLength);
        return;
    }
    if (found.HasFailure()) {
        found.Add(found.Raised());
    }
    const bool linked = found.call.presence != Presence::Absent;
    if (found.MayBeSilent() && linked) {
        found.AddSteps(Cause::LimitPassed, found.Until().Missed(1));
    }
    if (found.MayBeImmediate()) {
        if (found.call.presence != Presence::Present) {
            found.Add(Cause::NoLink);
        }
        if (found.call.subject.number > 0) {
            found.Add(Cause::NullPointer);
        }
    }
    if (found.MayBeSilent() && linked) {
        found.AddSteps(Cause::Ended, found.Until().Answered(1));
    }
}

// Disconnect, Receive, Flush: refused for want of a link.
void ExplainLinkCall(Collector& found) {
    if (found.HasFailure()) {
        found.Add(found.Raised());
    }
    const bool receives = found.call.subject.function == Function::Receive;
    if (found.MayBeSilent() &&
        (found.call.presence != Presence::Present || (!receives && !found.HasFailure()))) {
        found.Add(Cause::NoLink);
    }
    if (found.MayBeSilent() && receives && found.call.presence != Presence::Absent) {
        found.Add(Cause::NullPointer);
    }
}

void ExplainScanner(Collector& found) {
    const Call& call = found.call;
    const bool asksForDevice = call.subject.function == Function::GetDeviceInfo;
    if (found.HasFailure() && call.presence != Presence::Absent) {
        found.Add(found.Raised());
    }
    if (call.subject.function == Function::Initialize || !found.MayBeSilent()) {
        return;
    }
    if (call.presence != Presence::Present || (!asksForDevice && !found.HasFailure())) {
        found.Add(Cause::NoSession);
    }
    if (asksForDevice && call.presence != Presence::Absent) {
        if (!call.indexListed) {
            found.Add(Cause::IndexOutOfRange);
        }
        if (call.subject.number >= 0) {
            found.Add(Cause::NullPointer);
        }
    }
}

void ExplainSlowSuccess(Collector& found) {
    const Call& call = found.call;
    if (!call.duration.Exact() || call.duration.atLeast < Slow) {
        return;
    }
    const FunctionFacts& facts = FactsOf(call.subject.function);
    if (call.subject.function == Function::Disconnect) {
        found.AddSteps(Cause::LimitPassed, found.Until().Missed(1));
        found.Add(Cause::ClosingSlow);
    }
    if (facts.waits > 0) {
        found.AddSteps(Cause::SlowAnswers, found.Until().Answered(facts.waits));
    }
    if (facts.waits == 0 || found.IsBeyondWaits()) {
        found.Add(Cause::SystemSlow);
    }
    if (call.lockWait > 0 || facts.waits == 0 || call.subject.function == Function::Connect) {
        found.Add(Cause::WaitedForOthers);
    }
}

void ExplainFailure(Collector& found) {
    switch (found.call.subject.function) {
        case Function::Available:
            ExplainAvailable(found);
            break;
        case Function::Connect:
            ExplainConnect(found);
            break;
        case Function::Send:
            ExplainSend(found);
            break;
        case Function::Disconnect:
        case Function::Receive:
        case Function::Flush:
            ExplainLinkCall(found);
            break;
        default:
            ExplainScanner(found);
    }
    if (found.call.lockWait > Immediate) {
        found.Add(Cause::WaitedForOthers);
    }
    const FunctionFacts& facts = FactsOf(found.call.subject.function);
    const bool slow = facts.waits == 0 && found.call.OwnAtLeast() > Immediate;
    if (found.call.duration.Exact() && (slow || found.IsBeyondWaits())) {
        found.Add(Cause::SystemSlow);
    }
}

}  // namespace

Suspects Explain(const Call& call) {
    Collector found{call, {}};
    if (call.result && *call.result != -1) {
        ExplainSlowSuccess(found);
    } else {
        ExplainFailure(found);
    }
    if (call.result == -1 && found.suspects.empty()) {
        found.Add(Cause::LineMissing);
    }
    if (call.logEnded && !call.result) {
        found.Add(Cause::StillRunning);
    }
    return found.suspects;
}

}  // namespace orv::log
