#include "orv/doctor/log_evidence.h"
#include "orv/doctor/scoped_link.h"
#include "orv/terminal/printable.h"

namespace orv::doctor {

namespace {

constexpr int PollMs = 100;
constexpr int SwitchMs = 5000;  // time limit for the system to switch the radio
constexpr int ListenMs = 2000;
constexpr int HearMs = 10000;

bool AwaitAvailable(Examination& run, ResultCode wanted) {
    const std::int64_t begin = run.surroundings.Now();
    while (run.calls.Available().result != wanted) {
        if (run.surroundings.Now() - begin >= SwitchMs) {
            return false;
        }
        run.surroundings.Pass(PollMs);
    }
    return true;
}

bool Hears(Examination& run, std::int32_t scanner, int limitMs) {
    const std::int64_t begin = run.surroundings.Now();
    while (run.calls.Devices(scanner).empty()) {
        if (run.surroundings.Now() - begin >= limitMs) {
            return false;
        }
        run.surroundings.Pass(PollMs);
    }
    return true;
}

// Call this only if blocks may be sent to the device.
void CheckLinkWhileOff(Examination& run) {
    const MadeCall sent = run.calls.Send(*run.device, "?");
    run.findings.Judge(Check::RadioLink, sent.result != ORV_FAILED,
                       "a send returned " + std::to_string(sent.result) + " after " +
                           std::to_string(sent.ms) + " ms");
}

// Two scans: one runs when the radio is switched off, the other starts while it is off.
class Scans {
  public:
    explicit Scans(Examination& examined)
        : run(examined),
          before(run.calls.Initialize().result),
          during(run.calls.Initialize().result) {
        run.calls.Start(before);
        wasHeard = Hears(run, before, HearMs);
    }
    ~Scans() {
        for (const std::int32_t scanner : {before, during}) {
            run.calls.Stop(scanner);
            run.calls.Deinitialize(scanner);
        }
    }
    Scans(const Scans&) = delete;
    Scans& operator=(const Scans&) = delete;

    void StartWhileOff() { run.calls.Start(during); }
    void Judge();

  private:
    Examination& run;
    std::int32_t before;
    std::int32_t during;
    bool wasHeard = false;
};

// Call this when the radio is on again.
void Scans::Judge() {
    if (!wasHeard || !run.whyNoLog.empty()) {
        run.findings.Skip(Check::RadioScan, wasHeard ? run.whyNoLog : "no device was heard");
        return;
    }
    const std::uintmax_t size = run.LogSize();
    run.surroundings.Pass(ListenMs);
    const std::size_t packets = CountSince(run, size, log::Kind::Advertisement);
    run.calls.Start(before);
    const bool hearsAgain = Hears(run, before, HearMs);
    run.findings.Judge(Check::RadioScan, packets == 0 && hearsAgain,
                       Counted(packets, "packet") + " in " + std::to_string(ListenMs) +
                           " ms after the radio was on again; a new start " +
                           (hearsAgain ? "hears devices" : "hears nothing"));
}

void SkipAll(Examination& run, const char* why) {
    for (const Check check : {Check::RadioOff, Check::RadioLink, Check::RadioScan}) {
        run.findings.Skip(check, why);
    }
}

// Returns false if the user skipped the step.
bool SwitchOff(Examination& run, Scans& scans) {
    std::optional<ScopedLink> link;
    if (run.WhyNoLink().empty() && run.whyNoEcho.empty()) {
        link.emplace(run);
    }
    if (!run.surroundings.SwitchRadio(false)) {
        SkipAll(run, "skipped by the user");
        return false;
    }
    if (!AwaitAvailable(run, ORV_FAILED)) {
        run.findings.Refute(Check::RadioOff, "BluetoothAvailable stays 0 with the radio off");
        SkipAll(run, "BluetoothAvailable reports that the radio stayed on");
        return true;
    }
    scans.StartWhileOff();
    if (link && link->IsOpen()) {
        CheckLinkWhileOff(run);
    }
    return true;
}

}  // namespace

void CheckRadioSwitch(Examination& run) {
    if (!run.whyNoRadio.empty() || !run.surroundings.WhyNoSwitch().empty()) {
        return;
    }
    Scans scans(run);
    if (!SwitchOff(run, scans)) {
        return;
    }
    while (!run.surroundings.SwitchRadio(true)) {
    }
    if (run.findings.Of(Check::RadioOff).verdict == Verdict::Refuted) {
        return;
    }
    const bool isOn = AwaitAvailable(run, 0);
    run.findings.Judge(Check::RadioOff, isOn,
                       isOn ? "BluetoothAvailable turned to -1, then to 0"
                            : "BluetoothAvailable stays -1 with the radio on again");
    if (isOn) {
        scans.Judge();
    }
}

}  // namespace orv::doctor
