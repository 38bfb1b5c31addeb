// Measures random memory accesses in an area as large as a device list. Each access reads the index
// of the next, so the processor cannot overlap them.
#include <numeric>
#include <random>

#include "bench/support/measure.h"

namespace orv::bench {

namespace {

struct alignas(64) CacheLine {
    std::uint32_t next;
};

constexpr std::size_t BytesPerDevice = 76;

// Returns cache lines that form a random cycle: each contains the index of the next line.
std::vector<CacheLine> RandomCycle(std::size_t length) {
    std::vector<std::uint32_t> order(length);
    std::iota(order.begin(), order.end(), 0u);
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    std::vector<CacheLine> lines(length);
    for (std::size_t i = 0; i < length; ++i) {
        lines[order[i]].next = order[(i + 1) % length];
    }
    return lines;
}

const Registered accesses([] {
    for (const std::size_t listed : {10u, 1000u, 100000u, 1000000u}) {
        auto* const lines = new std::vector<CacheLine>;
        auto* const place = new std::uint32_t{0};
        const auto prepare = [=] {
            if (lines->empty()) {
                *lines = RandomCycle(listed * BytesPerDevice / sizeof(CacheLine));
            }
        };
        Measure("memory access, " + std::to_string(listed) + " listed", Ours, 1000, prepare,
                [=] { *place = (*lines)[*place].next; });
    }
});

}  // namespace

}  // namespace orv::bench
