// Simulates, without pauses, a sender that fills the device list for an hour: 1630 advertisements a
// second, each with an ORV name and a new address. The host polls ten times a second and reads the
// new records.
//
// Prints as "worst" the real time of the longest call, including waits for the lock, and as "late"
// the number of calls above 1 ms. Both grow when a busy machine preempts a thread. "own" is the
// maximum processor time of a call.
// Each call is repeated in several rounds, and the fastest counts.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <limits>
#include <thread>
#include <vector>

#include "bench/support/arrangement.h"
#include "bench/support/measure.h"
#include "scanner/advertisement_handler.h"

namespace orv::bench {

namespace {

constexpr std::size_t PerSecond = 1630;
constexpr std::size_t PerHour = PerSecond * 3600;
constexpr std::size_t PerPoll = PerSecond / 10;
constexpr int Rounds = 3;

// Finds the longest of many calls. Repeats all calls in each round and counts only the fastest run
// of each, because other processes can interrupt a call. `place` is a call's number in its round.
class Worst {
  public:
    explicit Worst(std::size_t places) : fastest(places, Never), round(places, 0) {}

    template <typename Body>
    void Measure(std::size_t place, Body body) {
        const auto start = std::chrono::steady_clock::now();
        const double startNs = ThreadNs();
        body();
        const double tookNs = std::max(1.0, ThreadNs() - startNs - ClockNs());
        const std::chrono::duration<double, std::nano> wall =
            std::chrono::steady_clock::now() - start;
        round[place] = std::max(round[place], static_cast<float>(tookNs));
        worst = std::max(worst, wall.count());
        late += wall.count() > 1e6 ? 1 : 0;
        ++calls;
    }

    void EndRound() {
        for (std::size_t place = 0; place < fastest.size(); ++place) {
            if (round[place] > 0) {
                fastest[place] = std::min(fastest[place], round[place]);
                round[place] = 0;
            }
        }
    }

    float Own(std::size_t place) const { return fastest[place] < Never ? fastest[place] : 0; }

    void Print(const char* name) const {
        float own = 0;
        for (std::size_t place = 0; place < fastest.size(); ++place) {
            own = std::max(own, Own(place));
        }
        std::printf("\"%s\": {\"calls\": %zu, \"own\": %.0f, \"worst\": %.0f, \"late\": %zu},\n",
                    name, calls, static_cast<double>(own), worst, late);
    }

  private:
    static constexpr float Never = std::numeric_limits<float>::infinity();

    std::vector<float> fastest;
    std::vector<float> round;
    double worst = 0;
    std::size_t late = 0;
    std::size_t calls = 0;
};

struct Findings {
    Worst advertisements{PerHour};
    Worst counts{PerHour / PerPoll};
    Worst records{PerHour};
    Worst restarts{1};
    Worst countsDuringRestart{1};
    std::vector<std::size_t> grown;  // indexes of advertisements that made the list allocate
    std::size_t heapBytes = 0;
    std::size_t residentBytes = 0;
};

std::size_t ResidentBytes() {
    std::size_t pages = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "re")) {
        if (std::fscanf(file, "%*u %zu", &pages) != 1) {
            pages = 0;
        }
        std::fclose(file);
    }
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

// Synchronizes the sender with the polls, so that a poll reads the same devices in every round.
struct Progress {
    std::atomic<std::size_t> heard{0};   // number of handled advertisements
    std::atomic<std::size_t> polled{0};  // number of finished polls
};

void Flood(Progress& progress, Findings& findings) {
    auto* const heard = new Heard(0, u"ORV-0042");
    const Reference<IBluetoothLEAdvertisementReceivedEventArgs> event(heard);
    const std::size_t residentBefore = ResidentBytes();
    const Allocations before = AllocationsSoFar();
    std::size_t count = before.count;
    findings.grown.clear();
    for (std::size_t i = 0; i < PerHour; ++i) {
        while (progress.polled < i / PerPoll) {
            std::this_thread::yield();
        }
        // The odd factor makes each address unique.
        heard->address = (i + 1) * 0x9E3779B97F4B & 0xFFFFFFFFFFFF;
        findings.advertisements.Measure(i, [&] { OnAdvertisementReceived(watcher, event); });
        if (AllocationsSoFar().count != count) {
            count = AllocationsSoFar().count;
            findings.grown.push_back(i);
        }
        progress.heard = i + 1;
    }
    if (findings.heapBytes == 0) {  // later rounds reuse memory that the first round freed
        findings.heapBytes = AllocationsSoFar().bytes - before.bytes;
        findings.residentBytes = ResidentBytes() - residentBefore;
    }
}

void Poll(Progress& progress, Findings& findings) {
    std::int32_t read = 0;
    for (std::size_t poll = 0; poll < PerHour / PerPoll; ++poll) {
        while (progress.heard < poll * PerPoll) {
            std::this_thread::yield();
        }
        std::int32_t count = 0;
        findings.counts.Measure(poll, [&] { count = OrvScanner_GetDeviceCount(0); });
        for (; read < count; ++read) {
            DiscoveredDevice info;
            findings.records.Measure(static_cast<std::size_t>(read),
                                     [&] { OrvScanner_GetDeviceInfo(0, read, &info); });
        }
        progress.polled = poll + 1;
    }
}

// Restarts the scan, which frees the list, while the host polls.
void Restart(Findings& findings) {
    std::atomic<bool> over{false};
    std::thread host([&] {
        while (!over) {
            findings.countsDuringRestart.Measure(0, [] { OrvScanner_GetDeviceCount(0); });
        }
    });
    findings.restarts.Measure(0, [] { OrvScanner_Start(0); });
    over = true;
    host.join();
}

void Run(Findings& findings) {
    Progress progress;
    std::thread host([&] { Poll(progress, findings); });
    Flood(progress, findings);
    host.join();
    if (OrvScanner_GetDeviceCount(0) != static_cast<ResultCode>(PerHour)) {
        std::fprintf(stderr, "flood: a device is missing from the list\n");
        std::exit(1);
    }
    Restart(findings);
    for (Worst* each : {&findings.advertisements, &findings.counts, &findings.records,
                        &findings.restarts, &findings.countsDuringRestart}) {
        each->EndRound();
    }
}

void Print(const Findings& findings) {
    float growth = 0;
    for (const std::size_t place : findings.grown) {
        growth = std::max(growth, findings.advertisements.Own(place));
    }
    std::printf("{\n");
    findings.advertisements.Print("advertisement");
    findings.counts.Print("count");
    findings.records.Print("record");
    findings.restarts.Print("restart");
    findings.countsDuringRestart.Print("count during restart");
    std::printf("\"growing advertisements\": %zu, \"worst growing advertisement\": %.0f,\n",
                findings.grown.size(), static_cast<double>(growth));
    std::printf("\"devices\": %zu, \"heap bytes\": %zu, \"resident bytes\": %zu}\n", PerHour,
                findings.heapBytes, findings.residentBytes);
}

}  // namespace

}  // namespace orv::bench

int main() {
    using namespace orv::bench;
    ArrangeListed(0);
    Findings findings;
    for (int round = 0; round < Rounds; ++round) {
        Run(findings);
    }
    Print(findings);
}
