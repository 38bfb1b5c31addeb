#include "orv/log/infer/analysis.h"

#include <algorithm>
#include <iterator>

namespace orv::log {

namespace {

// If a function has this many calls but no result line, the host probably writes none for it.
constexpr std::uint64_t SilentCalls = 3;

}  // namespace

std::size_t ResultFinder::Feed(std::string_view bytes, bool isEnd) {
    LineReader reader(bytes, 1, isEnd);
    while (const std::optional<Line> line = reader.Next()) {
        const Entry entry = ReadEntry(line->text);
        const auto function = static_cast<std::size_t>(entry.subject.function);
        calls[function] += entry.kind == Kind::Call ? 1 : 0;
        results[function] += entry.kind == Kind::Result ? 1 : 0;
    }
    return bytes.size() - reader.Rest().size();
}

ResultUse ResultFinder::Use() const {
    const bool any = std::any_of(std::begin(results), std::end(results),
                                 [](std::uint64_t count) { return count > 0; });
    ResultUse use;
    for (std::size_t function = 0; any && function < FunctionCount; ++function) {
        use.set(function, results[function] > 0 || calls[function] < SilentCalls);
    }
    return use;
}

Analysis::Analysis(Listener& to, ResultUse results, Threads threads)
    : listener(to),
      notes([this](const Note& note) { listener.OnNote(note); }),
      calls(
          results, threads,
          [this](const Call& call) {
              notes.AddCall(call);
              listener.OnCall(call);
          },
          [this](const Entry& failure) {
              Note note{NoteKind::CallbackFailed};
              note.PlaceAt(failure);
              listener.OnNote(note);
          }) {}

std::size_t Analysis::Feed(std::string_view bytes, bool isEnd) {
    LineReader reader(bytes, nextLine, isEnd);
    while (const std::optional<Line> line = reader.Next()) {
        if (line->complete) {
            Take(*line);
        } else {
            cut = true;
        }
    }
    nextLine = reader.NextNumber();
    strayLines += reader.StrayLines();
    return bytes.size() - reader.Rest().size();
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
    notes.Add(entry);
    listener.OnEntry(entry);
    calls.Add(entry);
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
    calls.End();
    notes.End();
    Report(NoteKind::StampsJumped, static_cast<std::uint64_t>(timeline.Jumps()));
    Report(NoteKind::StrayLines, strayLines);
    Report(NoteKind::LastLineCut, cut ? 1 : 0);
    Report(NoteKind::ResultsWithoutCall, calls.UnmatchedResults());
}

}  // namespace orv::log
