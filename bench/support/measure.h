// Registers benchmarks, which measure calls in batches.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <type_traits>

#include "bench/support/allocations.h"
#include "quelvixwinlib.h"

namespace orv::bench {

// Suffixes of a benchmark's name: the library, minimal hand-written code with the same effect (the
// floor), and the same runtime calls alone.
constexpr const char* Ours = "/ours";
constexpr const char* Floor = "/floor";
constexpr const char* RuntimeAlone = "/runtime";

inline double ThreadNs() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// Returns the processor time that a call of ThreadNs takes.
inline double ClockNs() {
    static const double least = [] {
        double found = 1e9;
        for (int i = 0; i < 10000; ++i) {
            const double start = ThreadNs();
            found = std::min(found, ThreadNs() - start);
        }
        return found;
    }();
    return least;
}

template <typename Body>
void CallOnce(Body& body) {
    if constexpr (std::is_void_v<decltype(body())>) {
        body();
    } else {
        auto result = body();
        benchmark::DoNotOptimize(result);
    }
}

template <typename Body>
double BatchNs(int batch, Body& body) {
    const double start = ThreadNs();
    for (int i = 0; i < batch; ++i) {
        CallOnce(body);
    }
    return std::max(1.0, ThreadNs() - start - ClockNs());
}

// Registers the benchmark `row` + `side`. `prepare` creates the initial state of a batch from any
// state and is not measured. `body` makes one call.
template <typename Prepare, typename Body>
void Measure(const std::string& row, const char* side, int batch, Prepare prepare, Body body) {
    auto run = [=](benchmark::State& state) mutable {
        Logging_Disable();  // the log is off unless `prepare` switches it on
        // Warms up with unmeasured calls, because other benchmarks have filled the caches.
        constexpr double WarmUpNs = 20e6;
        for (double warmed = 0; warmed < WarmUpNs; warmed += BatchNs(batch, body)) {
            prepare();
        }
        std::size_t allocations = 0;
        while (state.KeepRunningBatch(batch)) {
            prepare();
            const std::size_t before = AllocationsSoFar().count;
            state.SetIterationTime(BatchNs(batch, body) / 1e9);
            allocations += AllocationsSoFar().count - before;
        }
        state.counters["allocations"] =
            static_cast<double>(allocations) / static_cast<double>(state.iterations());
    };
    benchmark::RegisterBenchmark((row + side).c_str(), run)->UseManualTime();
}

// Registers a file's benchmarks before main.
struct Registered {
    explicit Registered(void (*registerAll)()) { registerAll(); }
};

}  // namespace orv::bench
