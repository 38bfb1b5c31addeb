#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

#include "bench/support/arrangement.h"
#include "bench/support/measure.h"
#include "frame/diagnostics_log.h"
#include "link/receive.h"
#include "scanner/advertisement_handler.h"

namespace orv::bench {

namespace {

const char* FloorPath() {
    static char path[system::LongestPath + 16];
    if (*path == '\0') {
        char module[system::LongestPath];
        system::ReadModulePath(module);
        strcat(strcpy(path, module), ".floor");
    }
    return path;
}

// The minimal hand-written log: appends a line that is already formatted.
void WriteByHand(std::string_view line) {
    const std::lock_guard<std::mutex> lock(floorMutex);
    const int file = open(FloorPath(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    benchmark::DoNotOptimize(write(file, line.data(), line.size()));
    close(file);
}

// Prepares a batch: empties the library's log and the log of the hand-written logger that it is
// compared with, and switches the library's log on.
void LogOn() {
    ArrangeLinks(1);
    ArrangeListed(10);
    ArrangeQueue(0);
    Logging_Enable();
    close(open(FloorPath(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
}

template <typename Call>
void Logged(const std::string& row, std::string_view line, Call call) {
    Measure(row, Ours, 50, LogOn, call);
    Measure(row, Floor, 50, LogOn, [line] { WriteByHand(line); });
}

ResultCode AppendLine() {
    static const char text[] = "a line of the host's own, of some length";
    return Logging_AppendLine(text, static_cast<std::int32_t>(sizeof text - 1));
}

std::atomic<bool> enabled{false};

[[gnu::noinline]] ResultCode LookByHand() {
    return enabled.load(std::memory_order_relaxed) ? 0 : -1;
}

const Registered lines([] {
    Measure(
        "log line, log off", Ours, 1000, [] {}, AppendLine);
    Measure(
        "log line, log off", Floor, 1000, [] {}, LookByHand);
    Logged("log line, log on", "00:00:00.000\ta line of the host's own, of some length\r\n",
           AppendLine);
    Logged("empty poll, log on", "00:00:00.000\tOrvDevice_Receive 1\r\n", [] {
        static std::uint8_t buffer[244];
        OrvDevice_Receive(1, sizeof buffer, buffer);
    });
    Logged("notification of 20 bytes, log on", "00:00:00.000\tOnDataReceived 1 20\r\n",
           [sender = SenderOf(1), event = Reference<IGattValueChangedEventArgs>(
                                      new Notification(20))] { OnDataReceived(sender, event); });
    Logged("advertisement, listed, 10 listed, log on",
           "00:00:00.000\tOnAdvertisementReceived 176685332496384 <ORV-0042> -60\r\n",
           [event = Reference<IBluetoothLEAdvertisementReceivedEventArgs>(new Heard(
                ListedAddress, u"ORV-0042"))] { OnAdvertisementReceived(watcher, event); });
});

}  // namespace

}  // namespace orv::bench
