// Checks the system, the library's file, calls from different threads, and durations.
#include <algorithm>
#include <fstream>
#include <iterator>
#include <thread>

#include "orv/doctor/scoped_link.h"
#include "orv/doctor/sha256.h"
#include "orv/doctor/system.h"

namespace orv::doctor {

namespace {

constexpr std::int64_t WaitMs = 2000;  // time limit of each wait in the library
constexpr std::int64_t MarginMs =
    1000;  // added to each limit: time of system calls that have no limit

std::string HashOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return Sha256(std::string(std::istreambuf_iterator<char>(file), {}));
}

void CheckFile(Examination& run) {
    const std::string version = run.library.Version();
    // Omits the folder, which may contain the user's name.
    const std::string file = TextOf(run.library.File().filename()) + ", version " + version +
                             (run.library.IsSimulated() ? ", simulated" : "") + ", SHA-256 " +
                             HashOf(run.library.File());
    if (version == "unknown") {
        run.findings.Skip(Check::LibraryFile, "the file states no version: " + file);
        return;
    }
    run.findings.Judge(Check::LibraryFile, version == QUELVIXWINLIB_VERSION,
                       file + "; orv has version " QUELVIXWINLIB_VERSION);
}

// Calls the library on this thread; connects if `link` is set. Returns whether the results
// agree with earlier steps.
bool AnswersAsUsual(Examination& run, bool link) {
    bool isUsual = run.calls.Available().result == (run.whyNoRadio.empty() ? 0 : ORV_FAILED);
    if (link) {
        isUsual = run.calls.Connect(*run.device).result == 0 && isUsual;
        isUsual = run.calls.Disconnect(*run.device).result == 0 && isUsual;
    }
    return isUsual;
}

}  // namespace

void CheckMachine(Examination& run) {
    run.findings.Judge(Check::System, system::IsSupported(), system::Name());
    CheckFile(run);
    const MadeCall available = run.calls.Available();
    if (available.result == 0) {
        run.findings.Confirm(Check::RadioOn,
                             "it returned 0 after " + std::to_string(available.ms) + " ms");
    } else {
        run.whyNoRadio = "no Bluetooth radio is on";
        run.findings.Skip(Check::RadioOn, run.whyNoRadio);
    }
}

void CheckThreads(Examination& run) {
    const bool link = run.whyNoRadio.empty() && run.WhyNoLink().empty();
    bool plain = false;
    std::thread([&] { plain = AnswersAsUsual(run, link); }).join();
    bool inApartment = false;
    const bool hasApartments =
        system::RunInApartment([&] { inApartment = AnswersAsUsual(run, link); });
    const auto same = [](bool isSame) { return isSame ? "the same answers" : "other answers"; };
    run.findings.Judge(
        Check::AnyThread, plain && (inApartment || !hasApartments),
        std::string(link ? "with a connect: " : "without a connect: ") +
            "a thread that was not prepared gets " + same(plain) +
            (hasApartments
                 ? std::string(", one in a single-threaded apartment gets ") + same(inApartment)
                 : "; this system has no apartments"));
}

void CheckTimes(Examination& run) {
    MadeCall longest{};
    std::string late;
    for (const MadeCall& call : run.calls.Made()) {
        const log::FunctionFacts& facts = log::FactsOf(call.subject.function);
        const std::int64_t limit = facts.waits * WaitMs + (call.alone ? 0 : WaitMs) + MarginMs;
        if (call.ms > limit && late.empty()) {
            late = std::string(facts.name) + " took " + std::to_string(call.ms) + " ms";
        }
        longest = call.ms >= longest.ms ? call : longest;
    }
    run.findings.Judge(Check::TimeBounds, late.empty(),
                       !late.empty()
                           ? late
                           : std::to_string(run.calls.Made().size()) + " calls; the longest, " +
                                 std::string(log::FactsOf(longest.subject.function).name) +
                                 ", took " + std::to_string(longest.ms) + " ms");
}

}  // namespace orv::doctor
