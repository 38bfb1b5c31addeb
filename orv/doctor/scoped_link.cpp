#include "orv/doctor/scoped_link.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <thread>

#include "orv/background.h"

namespace orv::doctor {

namespace {

constexpr int TimeoutMs = 1900;
constexpr int RetryMs = 250;
constexpr int RejectionRetries = 6;
constexpr int SystemGivesUpMs = 9000;  // time from the first connect until the system stops trying
constexpr int AnswerMs = 2000;
constexpr int PollMs = 10;
constexpr std::chrono::seconds HangLimit{10};
constexpr std::chrono::milliseconds CloseCheckTime{100};

std::string Ms(std::int64_t duration) {
    return std::to_string(duration) + " ms";
}

void NoteConnected(Examination& run, const MadeCall& call) {
    run.connectMs.push_back(call.ms);
    const auto [least, most] = std::minmax_element(run.connectMs.begin(), run.connectMs.end());
    const std::string seen = std::to_string(run.connectMs.size()) + " connects succeeded, in " +
                             std::to_string(*least) + " to " + Ms(*most);
    run.findings.Confirm(Check::NotInUse, seen);
    run.findings.Confirm(Check::ConnectInTime, seen);
    if (run.isRejectedUnheard) {
        run.findings.Refute(Check::KnownBeforeScan,
                            "the device was rejected at once before the scan, and accepted when "
                            "the scan had heard it");
    }
}

// Retries a rejected connect without scanning. If a retry succeeds, the device was in use.
bool RetryRejected(Examination& run, std::int64_t begin) {
    for (int retry = 0; retry < RejectionRetries; ++retry) {
        run.surroundings.Pass(RetryMs);
        const MadeCall call = run.calls.Connect(*run.device);
        if (call.result == 0) {
            run.findings.Refute(Check::NotInUse, "connects were rejected at once for " +
                                                     Ms(run.surroundings.Now() - begin) +
                                                     ", then accepted without a scan");
            NoteConnected(run, call);
            return true;
        }
    }
    if (run.isHeard) {
        run.findings.Refute(Check::NotInUse,
                            "the device was heard, and connects are rejected at "
                            "once: close other programs that use it");
    } else if (run.isRejectedUnheard) {
        run.findings.Refute(Check::Connect,
                            "the device was not heard, and connects are rejected "
                            "at once");
    }
    return false;
}

bool RetryTimedOut(Examination& run, std::int64_t begin) {
    int tries = 1;
    while (run.surroundings.Now() - begin < SystemGivesUpMs) {
        const MadeCall call = run.calls.Connect(*run.device);
        ++tries;
        if (call.result == 0) {
            run.findings.Refute(Check::ConnectInTime,
                                std::to_string(tries - 1) + " connects timed out; one succeeded " +
                                    Ms(run.surroundings.Now() - begin) + " after the first began");
            NoteConnected(run, call);
            return true;
        }
        run.surroundings.Pass(PollMs);
    }
    run.isLost = run.isHeard || !run.connectMs.empty();
    run.findings.Refute(run.isLost ? Check::DeviceStays : Check::Connect,
                        std::to_string(tries) + " connects timed out within " +
                            Ms(run.surroundings.Now() - begin) +
                            (run.isLost ? "; before, the device was there" : ""));
    return false;
}

// Waits for the disconnect, and returns false if it hangs. Counts checks instead of elapsed time,
// because the system may stop the process for a while.
bool HasReturned(const std::future<MadeCall>& closing) {
    for (std::chrono::milliseconds waited{0}; waited < HangLimit; waited += CloseCheckTime) {
        if (closing.wait_for(CloseCheckTime) == std::future_status::ready) {
            return true;
        }
    }
    return false;
}

bool Connect(Examination& run) {
    const std::int64_t begin = run.surroundings.Now();
    const MadeCall call = run.calls.Connect(*run.device);
    if (call.result == 0) {
        NoteConnected(run, call);
        return true;
    }
    return ScopedLink::IsTimeout(call) ? RetryTimedOut(run, begin) : RetryRejected(run, begin);
}

}  // namespace

ScopedLink::ScopedLink(Examination& examined) : run(examined), isOpen(Connect(examined)) {}

ScopedLink::~ScopedLink() {
    Close();
}

bool ScopedLink::IsTimeout(const MadeCall& call) {
    return call.result == ORV_FAILED && call.ms >= TimeoutMs;
}

std::string ScopedLink::Await(std::size_t expected) {
    std::string bytes = run.calls.Receive(*run.device);
    for (const std::int64_t begin = run.surroundings.Now();
         bytes.size() < expected && run.surroundings.Now() - begin < AnswerMs;) {
        run.surroundings.Pass(PollMs);
        bytes += run.calls.Receive(*run.device);
    }
    return bytes;
}

void ScopedLink::Close(bool alone) {
    if (!isOpen) {
        return;
    }
    isOpen = false;
    run.isClosing = true;
    std::packaged_task<MadeCall()> task([shared = run.shared_from_this(), alone] {
        return shared->calls.Disconnect(*shared->device, alone);
    });
    std::future<MadeCall> closing = task.get_future();
    std::thread worker(std::move(task));
    if (!HasReturned(closing)) {
        LeaveRunning(std::move(worker));
        run.closeHangs = true;
        run.findings.Refute(Check::CloseReturns, "a disconnect has not returned after " +
                                                     std::to_string(HangLimit.count()) +
                                                     " s: only the end of the program ends it");
        return;
    }
    worker.join();
    run.isClosing = false;
    const MadeCall call = closing.get();
    run.findings.Judge(Check::CloseReturns, call.result == 0,
                       call.result == 0 ? "the latest disconnect took " + Ms(call.ms)
                                        : "a disconnect failed after " + Ms(call.ms));
}

}  // namespace orv::doctor
