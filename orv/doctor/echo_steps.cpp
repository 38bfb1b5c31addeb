#include <algorithm>
#include <thread>

#include "orv/background.h"
#include "orv/doctor/log_evidence.h"
#include "orv/doctor/scoped_link.h"
#include "orv/terminal/printable.h"

namespace orv::doctor {

namespace {

constexpr std::size_t Sizes[] = {1, 20, 100, 182, 244, 245, 512};
constexpr std::size_t SafeSize = 20;  // every link accepts blocks of this size
constexpr std::size_t StreamBlock = 244;
constexpr std::size_t StreamBytes = 4096;
constexpr int LeastBytesPerSecond = 100;
constexpr double LeastWriteMs = 3.75;
constexpr int UnderWayMs = 20;  // time allowed for callbacks that began before the disconnect
constexpr int LateMs = 1000;

std::string Pattern(std::size_t size) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i * 7 + size) % 251);
    }
    return bytes;
}

bool CanEcho(const Examination& run) {
    return run.WhyNoLink().empty() && run.whyNoEcho.empty();
}

// Call this after a send timed out. Connects again. A successful connect refutes the assumption
// WriteAnswered, because the device was reachable.
void JudgeTimeout(Examination& run, ScopedLink& link, std::size_t size) {
    run.whyNoEcho = "a send timed out";
    link.Close();
    if (run.closeHangs) {
        return;
    }
    const ScopedLink again(run);
    if (again.IsOpen()) {
        run.findings.Refute(Check::WriteAnswered, "a send of " + Counted(size, "byte") +
                                                      " timed out, and the device was still there");
    }
}

struct Series {
    std::size_t largest = 0;
    int sends = 0;
    std::int64_t sendMs = 0;
    std::int64_t longestMs = 0;
    std::int64_t echoMs = 0;  // time from the first send to its complete echo
};

// Returns whether a larger block should be tried.
bool TryBlock(Examination& run, ScopedLink& link, std::size_t size, Series& series) {
    const std::string block = Pattern(size);
    const std::int64_t begin = run.surroundings.Now();
    const MadeCall sent = run.calls.Send(*run.device, block);
    if (ScopedLink::IsTimeout(sent)) {
        JudgeTimeout(run, link, size);
        return false;
    }
    ++series.sends;
    series.sendMs += sent.ms;
    series.longestMs = std::max(series.longestMs, sent.ms);
    const std::string echo = sent.result == ORV_FAILED ? "" : link.Await(size);
    if (echo == block) {
        series.echoMs = series.largest == 0 ? run.surroundings.Now() - begin : series.echoMs;
        series.largest = size;
        return true;
    }
    if (echo.size() >= size) {
        run.findings.Refute(Check::Notifications,
                            "the echo of " + Counted(size, "byte") +
                                " has other bytes: " + Counted(echo.size(), "byte"));
    } else if (series.largest > 0) {
        run.findings.Refute(
            Check::BlockSize,
            "blocks of " + std::to_string(series.largest) + " bytes came back, of " +
                std::to_string(size) + " bytes " + std::to_string(echo.size()) +
                (sent.result == ORV_FAILED ? "; the send failed" : "; the send succeeded"));
    }
    return false;
}

void ReportSeries(Examination& run, const Series& series) {
    if (series.sends > 0) {
        run.findings.Confirm(Check::WriteAnswered, std::to_string(series.sends) +
                                                       " sends, the longest took " +
                                                       std::to_string(series.longestMs) + " ms");
    }
    if (series.largest == 0) {
        run.whyNoEcho = run.whyNoEcho.empty() ? "the device does not echo" : run.whyNoEcho;
        return;
    }
    run.findings.Confirm(Check::Notifications, "the first echo arrived " +
                                                   std::to_string(series.echoMs) +
                                                   " ms after its send began, all bytes are right");
    const double average = static_cast<double>(series.sendMs) / series.sends;
    run.findings.Judge(
        Check::WriteKind, average >= LeastWriteMs,
        "a send took " + std::to_string(static_cast<std::int64_t>(average)) + " ms on average");
    run.findings.Confirm(Check::BlockSize,
                         "blocks of up to " + std::to_string(series.largest) + " bytes came back");
}

// Measures the throughput of sends that do not wait for echoes.
void CheckThroughput(Examination& run, ScopedLink& link, std::size_t block) {
    const std::string stream = Pattern(StreamBytes);
    std::string echo;
    const std::int64_t begin = run.surroundings.Now();
    for (std::size_t at = 0; at < stream.size(); at += block) {
        const MadeCall sent =
            run.calls.Send(*run.device, std::string_view(stream).substr(at, block));
        if (sent.result == ORV_FAILED) {
            run.findings.Refute(Check::Throughput,
                                "a send failed after " + std::to_string(at) + " bytes");
            return;
        }
        echo += run.calls.Receive(*run.device);
    }
    const std::int64_t sentMs = std::max<std::int64_t>(run.surroundings.Now() - begin, 1);
    for (std::string more; echo.size() < stream.size(); echo += more) {
        more = link.Await(1);
        if (more.empty()) {
            break;
        }
    }
    const std::int64_t backMs = std::max<std::int64_t>(run.surroundings.Now() - begin, 1);
    const std::int64_t bytes = StreamBytes;
    run.findings.Judge(
        Check::Throughput, echo == stream && bytes * 1000 / backMs >= LeastBytesPerSecond,
        std::to_string(bytes * 1000 / sentMs) + " bytes a second to the device, " +
            std::to_string(bytes * 1000 / backMs) + " there and back, in blocks of " +
            std::to_string(block) + "; " + std::to_string(echo.size()) + " of " +
            std::to_string(bytes) + " bytes came back" +
            (echo == stream ? "" : ", not in the order of the stream"));
}

}  // namespace

void CheckEcho(Examination& run) {
    if (!CanEcho(run)) {
        return;
    }
    ScopedLink link(run);
    if (!link.IsOpen()) {
        return;
    }
    run.calls.Flush(*run.device);
    Series series;
    for (const std::size_t size : Sizes) {
        if (!TryBlock(run, link, size, series)) {
            break;
        }
    }
    ReportSeries(run, series);
    if (run.whyNoEcho.empty() && link.IsOpen()) {
        run.calls.Flush(*run.device);
        CheckThroughput(run, link, std::min(series.largest, StreamBlock));
    }
}

void CheckSecondLink(Examination& run) {
    if (!CanEcho(run)) {
        return;
    }
    ScopedLink older(run);
    ScopedLink newer(run);
    if (!older.IsOpen() || !newer.IsOpen()) {
        run.findings.Refute(Check::SecondLink, "a connect failed while a link was open");
        return;
    }
    const std::string block = Pattern(SafeSize);
    run.calls.Send(*run.device, block);
    const std::size_t toOlder = older.Await(block.size()).size();
    older.Close();
    if (run.closeHangs) {
        return;
    }
    const std::size_t toNewer = newer.Await(block.size()).size();
    run.calls.Send(*run.device, block);
    const std::size_t afterwards = newer.Await(block.size()).size();
    run.findings.Judge(
        Check::SecondLink, toOlder == SafeSize && toNewer == SafeSize && afterwards == SafeSize,
        "of an echo of " + Counted(SafeSize, "byte") + ", the older link got " +
            std::to_string(toOlder) + ", the newer " + std::to_string(toNewer) +
            "; after the older one's disconnect, the newer got " + std::to_string(afterwards));
}

namespace {

void CheckLate(Examination& run) {
    ScopedLink link(run);
    if (!link.IsOpen()) {
        return;
    }
    run.calls.Send(*run.device, Pattern(SafeSize));
    link.Close();
    run.surroundings.Pass(UnderWayMs);
    const std::uintmax_t closed = run.LogSize();
    run.surroundings.Pass(LateMs);
    if (!run.whyNoLog.empty()) {
        run.findings.Skip(Check::LateNotifications, run.whyNoLog);
        return;
    }
    const std::size_t late = CountSince(run, closed, log::Kind::Notification);
    run.findings.Judge(Check::LateNotifications, late == 0,
                       Counted(late, "notification") + " in the log from " +
                           std::to_string(UnderWayMs) + " to " + std::to_string(LateMs) +
                           " ms after the disconnect");
}

void CheckSendMeanwhile(Examination& run) {
    const auto sent = std::make_shared<MadeCall>();
    {
        ScopedLink link(run);
        if (!link.IsOpen()) {
            return;
        }
        std::thread sender([shared = run.shared_from_this(), sent] {
            *sent = shared->calls.Send(*shared->device, Pattern(SafeSize), false);
        });
        link.Close(false);
        if (run.closeHangs) {
            LeaveRunning(std::move(sender));  // the disconnect blocks the send forever
            return;
        }
        sender.join();
    }
    const ScopedLink again(run);
    run.findings.Judge(Check::SendWhileDisconnecting, again.IsOpen(),
                       "the send returned " + std::to_string(sent->result) + " after " +
                           std::to_string(sent->ms) + " ms; the next connect " +
                           (again.IsOpen() ? "succeeded" : "failed"));
}

}  // namespace

void CheckDisconnecting(Examination& run) {
    if (CanEcho(run)) {
        CheckLate(run);
    }
    if (CanEcho(run)) {
        CheckSendMeanwhile(run);
    }
}

}  // namespace orv::doctor
