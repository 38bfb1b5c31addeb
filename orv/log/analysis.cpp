#include "orv/log/analysis.h"

#include <algorithm>

namespace orv::log {

namespace {

// A function that was called so often without a result line is one for which the host writes none.
constexpr std::uint64_t SilentCalls = 3;

}  // namespace

ResultUse FindResults(std::string_view bytes) {
    std::uint64_t calls[FunctionCount] = {}, results[FunctionCount] = {};
    bool any = false;
    LineReader reader(bytes);
    while (const std::optional<Line> line = reader.Next()) {
        const Entry entry = ReadEntry(line->text);
        const auto function = static_cast<std::size_t>(entry.subject.function);
        calls[function] += entry.kind == Kind::Call ? 1 : 0;
        results[function] += entry.kind == Kind::Result ? 1 : 0;
        any = any || entry.kind == Kind::Result;
    }
    ResultUse use;
    for (std::size_t function = 0; any && function < FunctionCount; ++function) {
        use.set(function, results[function] > 0 || calls[function] < SilentCalls);
    }
    return use;
}

Analysis::Analysis(Listener& to, ResultUse results, Threads threads)
    : listener(to),
      observer([this](const Note& note) { listener.OnNote(note); }),
      history(
          results, threads,
          [this](const Call& call) {
              observer.AddCall(call);
              listener.OnCall(call);
          },
          [this](const Entry& failure) {
              Note note{NoteKind::CallbackFailed};
              note.stamp = failure.stamp;
              note.time = failure.time;
              note.line = failure.line;
              listener.OnNote(note);
          }) {}

void Analysis::Feed(std::string_view bytes) {
    LineReader reader(bytes, nextLine);
    while (const std::optional<Line> line = reader.Next()) {
        if (line->complete) {
            Take(*line);
        } else {
            cut = true;
        }
    }
    nextLine = reader.NextNumber();
    strayLines += reader.StrayLines();
}

void Analysis::Take(const Line& line) {
    Entry entry = ReadEntry(line.text);
    entry.stamp = line.stamp;
    entry.time = timeline.Place(line.stamp);
    entry.line = line.number;
    if (totals.lines++ == 0) {
        totals.firstStamp = line.stamp;
        totals.firstTime = entry.time;
    }
    totals.lastStamp = line.stamp;
    totals.lastTime = std::max(totals.lastTime, entry.time);
    observer.Add(entry);
    listener.OnEntry(entry);
    history.Add(entry);
}

void Analysis::Report(NoteKind kind, std::uint64_t count) {
    if (count > 0) {
        Note note{kind};
        note.stamp = totals.lastStamp;
        note.time = totals.lastTime;
        note.count = static_cast<std::int64_t>(count);
        listener.OnNote(note);
    }
}

void Analysis::End() {
    history.End();
    observer.End();
    Report(NoteKind::StampsJumped, static_cast<std::uint64_t>(timeline.Jumps()));
    Report(NoteKind::StrayLines, strayLines);
    Report(NoteKind::LastLineCut, cut ? 1 : 0);
    Report(NoteKind::ResultsWithoutCall, history.UnmatchedResults());
}

}  // namespace orv::log
