#include "orv/log/findings.h"

#include <algorithm>

namespace orv::log {

namespace {

struct Collector : Listener {
    explicit Collector(Findings& into) : findings(into) {}
    void OnCall(const Call& call) override { findings.calls.push_back(call); }
    void OnNote(const Note& note) override { findings.notes.push_back(note); }
    Findings& findings;
};

}  // namespace

Findings FindAll(std::string_view bytes, Threads threads) {
    const ResultUse results = FindResults(bytes);
    Findings findings{results.any(), threads, {}, {}, {}};
    Collector collector(findings);
    Analysis analysis(collector, results, threads);
    analysis.Feed(bytes);
    analysis.End();
    findings.totals = analysis.Sums();
    std::sort(findings.calls.begin(), findings.calls.end(),
              [](const Call& one, const Call& other) { return one.line < other.line; });
    // Line 0, the whole log, becomes the largest.
    std::stable_sort(
        findings.notes.begin(), findings.notes.end(),
        [](const Note& one, const Note& other) { return one.line - 1 < other.line - 1; });
    return findings;
}

}  // namespace orv::log
