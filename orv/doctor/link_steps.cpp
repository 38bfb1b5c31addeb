// Checks links without sending anything.
#include "orv/doctor/scoped_link.h"
#include "orv/terminal/printable.h"

namespace orv::doctor {

namespace {

// Short, because the next step, a scan, must start before the devices of some scenarios advertise
// at 100 ms.
constexpr int QuietMs = 60;
constexpr int LongQuietMs = 500;
constexpr int QuietBytesPerMs = 10;
constexpr int Reconnects = 3;

void CheckQuiet(Examination& run, int ms) {
    run.surroundings.Pass(ms);
    const ResultCode unasked = run.calls.Flush(*run.device).result;
    run.findings.Judge(
        Check::QuietDevice, unasked < ms * QuietBytesPerMs,
        Counted(unasked, "byte") + " in the first " + std::to_string(ms) + " ms of a link");
}

}  // namespace

void CheckConnectBeforeScan(Examination& run) {
    if (!run.device || !run.whyNoRadio.empty()) {
        return;
    }
    ScopedLink link(run);
    if (link.IsOpen()) {
        run.findings.Confirm(Check::KnownBeforeScan, "a connect before the scan succeeded");
        CheckQuiet(run, QuietMs);
        return;
    }
    run.isRejectedUnheard =
        !run.isLost && run.findings.Of(Check::Connect).verdict == Verdict::NotTested;
}

void CheckReconnect(Examination& run) {
    if (!run.device || !run.whyNoRadio.empty()) {
        return;
    }
    const std::size_t before = run.connectMs.size();
    for (int turn = 0; turn < Reconnects && !run.closeHangs; ++turn) {
        ScopedLink link(run);
        if (!link.IsOpen()) {
            return;
        }
        if (turn == 0) {
            CheckQuiet(run, LongQuietMs);
        }
    }
    if (!run.closeHangs) {
        run.findings.Confirm(Check::Connect, std::to_string(run.connectMs.size() - before) +
                                                 " connects and disconnects in a row succeeded");
    }
}

}  // namespace orv::doctor
