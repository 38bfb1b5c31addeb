#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <tuple>

#include "orv/doctor/log_evidence.h"
#include "orv/log/read/lines.h"
#include "orv/terminal/printable.h"

namespace orv::doctor {

namespace {

using SubjectKey = std::tuple<log::Function, std::uint64_t, std::int32_t>;
using ResultKey = std::pair<SubjectKey, std::int64_t>;

SubjectKey KeyOf(const log::Subject& subject) {
    return {subject.function, subject.handle, subject.number};
}

template <typename Take>
void ForEachEntry(const Examination& run, std::uintmax_t offset, Take take) {
    std::ifstream file(run.library.LogFile(), std::ios::binary);
    file.seekg(static_cast<std::streamoff>(offset));
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    log::LineReader lines(bytes);
    while (const auto line = lines.Next()) {
        take(log::ReadEntry(line->text));
    }
}

// Counts log lines without a call and calls without a log line.
class Comparison {
  public:
    explicit Comparison(const std::vector<MadeCall>& made) {
        for (const MadeCall& call : made) {
            --calls[KeyOf(call.subject)];
            --results[{KeyOf(call.subject), call.result}];
        }
    }

    void Take(const log::Entry& entry) {
        if (entry.kind == log::Kind::Call) {
            ++calls[KeyOf(entry.subject)];
            ++lines;
        } else if (entry.kind == log::Kind::Result) {
            ++results[{KeyOf(entry.subject), entry.number}];
        }
        failures += entry.kind == log::Kind::Failure;
    }

    void Report(Findings& findings) const {
        long missing = 0;
        long surplus = 0;
        // Ignores surplus lines: a hanging call has a line, but is not in `made`.
        for (const auto& [key, count] : calls) {
            missing += std::max(-count, 0L);
        }
        for (const auto& [key, count] : results) {
            missing += std::max(-count, 0L);
            surplus += std::max(count, 0L);
        }
        findings.Judge(Check::LogLines, missing == 0 && surplus == 0 && failures == 0,
                       Counted(lines, "call") + ", " + Counted(missing, "line") + " missing, " +
                           std::to_string(surplus) + " without a call, " +
                           Counted(failures, "failure line"));
    }

  private:
    std::map<SubjectKey, long> calls;
    std::map<ResultKey, long> results;
    long lines = 0;
    long failures = 0;
};

// Counts the notifications in the log from the line of a connect to its result line. Stops at the
// first send, because notifications after a send may answer it.
class EarlyNotifications {
  public:
    void Take(const log::Entry& entry) {
        const bool isCall = entry.kind == log::Kind::Call;
        isAfterSend = isAfterSend || (isCall && entry.subject.function == log::Function::Send);
        if (isAfterSend) {
            return;
        }
        if (isCall && entry.subject.function == log::Function::Connect) {
            ++connects;
            isConnecting = true;
        }
        isConnecting = isConnecting && entry.kind != log::Kind::Result;
        early += isConnecting && entry.kind == log::Kind::Notification;
    }

    void Report(Examination& run) const {
        if (!run.connectMs.empty()) {
            run.findings.Judge(
                Check::EarlyNotifications, early == 0,
                Counted(early, "notification") + " during " + Counted(connects, "connect"));
        }
    }

  private:
    long connects = 0;
    long early = 0;
    bool isConnecting = false;
    bool isAfterSend = false;
};

}  // namespace

std::size_t CountSince(const Examination& run, std::uintmax_t size, log::Kind kind) {
    std::size_t count = 0;
    ForEachEntry(run, size, [&](const log::Entry& entry) {
        count += entry.kind == kind &&
                 (kind != log::Kind::Notification || run.device == entry.subject.handle);
    });
    return count;
}

void CheckLog(Examination& run) {
    if (!run.whyNoLog.empty()) {
        run.findings.Skip(Check::EarlyNotifications, run.whyNoLog);
        return;
    }
    Comparison comparison(run.calls.Made());
    EarlyNotifications early;
    ForEachEntry(run, 0, [&](const log::Entry& entry) {
        comparison.Take(entry);
        early.Take(entry);
    });
    comparison.Report(run.findings);
    early.Report(run);
}

}  // namespace orv::doctor
