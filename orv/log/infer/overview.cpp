#include "orv/log/infer/overview.h"

#include <algorithm>
#include <map>

namespace orv::log {

namespace {

// Maximum number of ended calls that wait in memory for an older call to end.
constexpr std::size_t MostWaiting = 50'000;

struct Surveyor : Listener {
    explicit Surveyor(Overview& into) : overview(into) {}
    void OnCall(const Call& call) override {
        ++overview.calls;
        overview.failedCalls += call.result == -1 ? 1 : 0;
    }
    void OnNote(const Note& note) override { overview.notes.push_back(note); }
    Overview& overview;
};

// Receives calls in the order of their ends and passes them on in the order of their starts.
class InOrder : public Listener {
  public:
    explicit InOrder(const std::function<void(const Call&)>& taker) : take(taker) {}
    void Watch(const Analysis& of) { analysis = &of; }

    void OnCall(const Call& call) override {
        const std::uint64_t complete = analysis->CompleteUntil();
        if (waiting.empty() && call.line < complete) {
            take(call);
            return;
        }
        waiting.emplace(call.line, call);
        while (!waiting.empty() &&
               (waiting.begin()->first < complete || waiting.size() > MostWaiting)) {
            take(waiting.begin()->second);
            waiting.erase(waiting.begin());
        }
    }

  private:
    const std::function<void(const Call&)>& take;
    const Analysis* analysis = nullptr;
    std::map<std::uint64_t, Call> waiting;  // ended calls by line number
};

Totals Run(LogFile& log, Analysis& analysis) {
    log.Read([&](std::string_view piece, bool isEnd) { return analysis.Feed(piece, isEnd); });
    analysis.End();
    return analysis.Sums();
}

}  // namespace

ResultUse FindResults(LogFile& log) {
    ResultFinder finder;
    log.Read([&](std::string_view piece, bool isEnd) { return finder.Feed(piece, isEnd); });
    return finder.Use();
}

Totals Analyse(LogFile& log, ResultUse results, Threads threads, Listener& listener) {
    Analysis analysis(listener, results, threads);
    return Run(log, analysis);
}

Overview Survey(LogFile& log, Threads threads) {
    Overview overview{FindResults(log), threads, {}, 0, 0, {}};
    Surveyor surveyor(overview);
    overview.totals = Analyse(log, overview.results, threads, surveyor);
    // Subtracting 1 turns line 0 into the largest number, so notes about the whole log are last.
    std::stable_sort(
        overview.notes.begin(), overview.notes.end(),
        [](const Note& one, const Note& other) { return one.line - 1 < other.line - 1; });
    return overview;
}

void ForEachCall(LogFile& log, const Overview& overview,
                 const std::function<void(const Call&)>& take) {
    InOrder inOrder(take);
    Analysis analysis(inOrder, overview.results, overview.threads);
    inOrder.Watch(analysis);
    Run(log, analysis);
}

}  // namespace orv::log
