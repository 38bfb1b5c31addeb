#include "orv/log/infer/causes.h"

#include <limits>

namespace orv::log {

namespace {

// A successful call is explained only if it took at least this many ms.
constexpr std::int64_t Slow = 1000;

// Maximum duration in ms of a call that is rejected without waiting for the system.
constexpr std::int64_t Immediate = 250;

struct SuspectList {
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
    bool WasRejected() const { return call.result == -1 && !HasFailure(); }
    // Returns whether the call may have been rejected without a failure line.
    bool MayBeSilent() const { return !HasFailure() || call.failures.owner != Owner::ThisCall; }
    bool MayBeImmediate() const { return MayBeSilent() && Told(call.OwnAtLeast()) <= Immediate; }
    // Returns whether the call took longer than all its timeouts, for example if the machine slept.
    bool IsBeyondWaits() const { return Told(call.OwnAtLeast()) < call.OwnAtLeast(); }
    // Returns `time`, or 0 if it is longer than all timeouts together, and so proves nothing.
    std::int64_t Told(std::int64_t time) const {
        const int waits = FactsOf(call.subject.function).waits;
        return waits > 0 && time > waits * (WaitLimit + Late) ? 0 : time;
    }
    Cause Raised() const {
        if (call.failures.systemCallFailed) {
            return Cause::SystemFailure;
        }
        return call.failures.outOfMemory ? Cause::OutOfMemory : Cause::StandardFailure;
    }
    // Returns the bounds of the time from the call's start to the end of the failed operation.
    WaitTimes Until() const {
        if (HasFailure() && !MayBeSilent()) {
            return UntilFailure();
        }
        return {Told(call.OwnAtLeast()),
                call.duration.atMost.value_or(std::numeric_limits<std::int64_t>::max())};
    }
    WaitTimes UntilFailure() const { return {Told(call.failures.first), call.failures.first}; }
};

void ExplainAvailable(SuspectList& found) {
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

constexpr Steps WithService = 0b11110;  // OrvDevice_Connect's waits after the device is open
constexpr Steps WithList = 0b01010;     // waits for a list of services or characteristics
constexpr Steps WithOwner = 0b01110;    // waits that fail if another program uses the device

// Adds the causes that make connect fail without a failure line.
void AddSilentConnect(SuspectList& found, const WaitTimes& times, Steps among) {
    const Steps answered = times.Answered(5) & among;
    const Steps missed = times.Missed(5) & among;
    const DeviceEvidence& device = found.call.device;
    found.AddSteps(Cause::LimitPassed, missed);
    if (device.isBusy) {
        found.AddSteps(Cause::SystemBusy, missed);
    }
    const auto addUnknown = [&] {
        if (answered & 1) {
            found.Add(Cause::UnknownDevice);
        }
    };
    if (!device.isKnown) {
        addUnknown();
    }
    found.AddSteps(Cause::InUse, answered & WithOwner);
    found.AddSteps(Cause::Refused, answered & WithService);
    found.AddSteps(Cause::Ended, answered);
    if (device.isKnown) {
        addUnknown();  // last, because the log shows that the system knew the device
    }
}

void ExplainConnect(SuspectList& found) {
    if (found.HasFailure()) {
        const WaitTimes times = found.UntilFailure();
        const Steps answered = times.Answered(5);
        found.AddSteps(found.Raised(), answered);
        if (found.call.failures.systemCallFailed) {
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

void ExplainSend(SuspectList& found) {
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
        found.AddSteps(Cause::Unacknowledged, found.Until().Missed(1));
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

void ExplainLinkCall(SuspectList& found) {
    if (found.HasFailure()) {
        found.Add(found.Raised());
    }
    const bool receives = found.call.subject.function == Function::Receive;
    if (found.MayBeSilent() &&
        (found.call.presence != Presence::Present || (!receives && found.WasRejected()))) {
        found.Add(Cause::NoLink);
    }
    if (found.MayBeSilent() && receives && found.call.presence != Presence::Absent) {
        found.Add(Cause::NullPointer);
    }
}

void ExplainScanner(SuspectList& found) {
    const Call& call = found.call;
    const bool asksForDevice = call.subject.function == Function::GetDeviceInfo;
    if (found.HasFailure() && call.presence != Presence::Absent) {
        found.Add(found.Raised());
    }
    if (call.subject.function == Function::Initialize || !found.MayBeSilent()) {
        return;
    }
    if (call.presence != Presence::Present || (!asksForDevice && found.WasRejected())) {
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

void ExplainSlowSuccess(SuspectList& found) {
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

bool Closes(const Call& call) {
    return call.subject.function == Function::Disconnect ||
           call.subject.function == Function::Connect;
}

// Adds the causes for a call that has not returned. Called before ExplainFailure, because a wait is
// likelier than a rejection: a rejected call would have returned.
void ExplainHanging(SuspectList& found) {
    const Call& call = found.call;
    if (call.lockWait > Immediate) {
        found.Add(Cause::WaitedForOthers);
    }
    if (Closes(call) && found.IsBeyondWaits()) {
        found.Add(Cause::ClosingHangs);
    }
}

void ExplainFailure(SuspectList& found) {
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
    SuspectList found{call, {}};
    if (call.result && *call.result != -1) {
        ExplainSlowSuccess(found);
    } else {
        if (call.isHanging) {
            ExplainHanging(found);
        }
        ExplainFailure(found);
    }
    if (call.result == -1 && found.suspects.empty()) {
        found.Add(Cause::LineMissing);
    }
    if (call.isHanging && Closes(call)) {
        found.Add(Cause::ClosingHangs);
    }
    if (call.logEnded && !call.result) {
        found.Add(Cause::StillRunning);
    }
    return found.suspects;
}

bool HasSign(const Call& call) {
    const FunctionFacts& facts = FactsOf(call.subject.function);
    const std::int64_t longest = call.duration.atMost.value_or(0);
    return call.result || call.failures.count > 0 ||
           (call.logEnded && (facts.waits > 0 || facts.holdsLock)) ||
           (call.isHanging && call.lockWait > Immediate) ||
           (facts.waits > 0 && longest >= WaitLimit - Early);
}

}  // namespace orv::log
