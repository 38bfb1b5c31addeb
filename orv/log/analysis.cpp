#include "orv/log/analysis.h"

#include <algorithm>

namespace orv::log {

bool HasResults(std::string_view bytes) {
    constexpr std::string_view Sign = "\tReturned ";
    for (std::size_t place = bytes.find(Sign); place != bytes.npos;
         place = bytes.find(Sign, place + 1)) {
        const std::string_view text = bytes.substr(place + 1, 128);
        if (ReadEntry(text.substr(0, text.find_first_of("\r\n"))).kind == Kind::Result) {
            return true;
        }
    }
    return false;
}

Analysis::Analysis(Listener& to, bool hasResults, Threads threads)
    : listener(to),
      observer([this](const Note& note) { listener.OnNote(note); }),
      history(
          hasResults, threads,
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
