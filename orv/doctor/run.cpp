#include "orv/doctor/run.h"

#include <chrono>
#include <cstdio>
#include <future>
#include <thread>

#include "orv/background.h"
#include "orv/terminal/printable.h"
#include "orv/terminal/terminal.h"

namespace orv::doctor {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr milliseconds PollTime{50};
constexpr seconds SimulatedHangLimit{10};  // short, because simulated waits take no real time
constexpr seconds HangLimit{30};           // longer than a connect that also waits for locks
constexpr seconds StopLimit{2};            // time for the steps to end after Ctrl-C

// The calls that may hang if closing a link hangs: the disconnect, and a send that waits for it.
constexpr log::Function HeldByClose[] = {log::Function::Disconnect, log::Function::Send};

struct Step {
    const char* name;
    void (*check)(Examination&);
};

constexpr Step Steps[] = {
    {"system and library", CheckMachine},
    {"connect before a scan", CheckConnectBeforeScan},
    {"scan", CheckScan},
    {"reconnect", CheckReconnect},
    {"echo", CheckEcho},
    {"two links", CheckSecondLink},
    {"disconnect", CheckDisconnecting},
    {"threads", CheckThreads},
    {"the radio's switch", CheckRadioSwitch},
    {"time limits", CheckTimes},
    {"log", CheckLog},
};

void TakeSteps(Examination& run) {
    try {
        for (const Step& step : Steps) {
            fprintf(stderr, "checking: %s\n", step.name);
            step.check(run);
        }
    } catch (const Interrupted&) {
        fprintf(stderr, "stopped by Ctrl-C\n");
    }
}

// Returns a call that has been pending for `limit` of real time. Ignores the calls that ScopedLink
// judges.
std::optional<log::Function> Hanging(const Examination& run, seconds limit) {
    // Taken before isClosing is read: a disconnect that begins in between is too young to hang.
    const auto latest = std::chrono::steady_clock::now() - limit;
    using Ignored = std::span<const log::Function>;
    return run.calls.Pending(latest, run.isClosing ? Ignored(HeldByClose) : Ignored());
}

// Waits for the steps. Returns false if a call hangs, or if the steps still run 2 s after Ctrl-C.
bool AwaitSteps(Examination& run, const std::future<void>& steps) {
    using Clock = std::chrono::steady_clock;
    const seconds limit = run.surroundings.TimeIsSimulated() ? SimulatedHangLimit : HangLimit;
    std::optional<Clock::time_point> interrupted;
    while (steps.wait_for(PollTime) != std::future_status::ready) {
        const auto hanging = Hanging(run, limit);
        if (terminal::IsInterrupted() && !interrupted) {
            interrupted = Clock::now();
        }
        if (hanging) {
            run.findings.Refute(Check::TimeBounds, std::string(log::FactsOf(*hanging).name) +
                                                       " has not returned; the run ends here");
        }
        if (hanging || (interrupted && Clock::now() - *interrupted > StopLimit)) {
            run.calls.Abandon();
            return false;
        }
    }
    return true;
}

void Conclude(Examination& run) {
    if (run.findings.Of(Check::Connect).verdict == Verdict::Confirmed && !run.isLost) {
        run.findings.Confirm(Check::DeviceStays,
                             Counted(run.connectMs.size(), "connect") + " succeeded");
    }
    for (const CheckFacts& facts : AllChecks()) {
        if (run.findings.Of(facts.check).seen.empty()) {
            run.findings.Skip(facts.check, run.WhyNotTested(facts.need));
        }
    }
}

}  // namespace

void Perform(const std::shared_ptr<Examination>& run) {
    std::packaged_task<void()> task([run] { TakeSteps(*run); });
    std::future<void> steps = task.get_future();
    std::thread worker(std::move(task));
    if (AwaitSteps(*run, steps)) {
        worker.join();
        steps.get();
    } else {
        LeaveRunning(std::move(worker));
    }
    Conclude(*run);
}

}  // namespace orv::doctor
