// How every benchmark is measured: batches between which the next is prepared, off the clock.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <type_traits>

#include "bench/support/allocations.h"
#include "quelvixwinlib.h"

namespace orv::bench {

// Which side of a row a benchmark is: the library, the least code by hand with the same effect, or
// the same calls of the runtime with nothing done about them.
constexpr const char* Ours = "/ours";
constexpr const char* Floor = "/floor";
constexpr const char* RuntimeAlone = "/runtime";

// The processor time of the calling thread: what else runs on the machine is not in it.
inline double ThreadNs() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

// What a reading of that clock takes itself.
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

// One call, whose result the compiler must believe to be wanted.
template <typename Body>
void CallOnce(Body& body) {
    if constexpr (std::is_void_v<decltype(body())>) {
        body();
    } else {
        auto result = body();
        benchmark::DoNotOptimize(result);
    }
}

// Registers `row` + `side`. `prepare` runs before each batch, off the clock, and so must leave
// everything as the batch needs it whatever ran before; `body` is one call.
template <typename Prepare, typename Body>
void Measure(const std::string& row, const char* side, int batch, Prepare prepare, Body body) {
    auto run = [=](benchmark::State& state) mutable {
        Logging_Disable();  // unless `prepare` switches it on
        std::size_t allocations = 0;
        while (state.KeepRunningBatch(batch)) {
            prepare();
            const std::size_t before = AllocationsSoFar().count;
            const double start = ThreadNs();
            for (int i = 0; i < batch; ++i) {
                CallOnce(body);
            }
            const double took = ThreadNs() - start - ClockNs();
            allocations += AllocationsSoFar().count - before;
            state.SetIterationTime(std::max(took, 1.0) / 1e9);
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
