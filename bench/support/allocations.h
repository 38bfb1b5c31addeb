#pragma once

#include <cstddef>

namespace orv::bench {

struct Allocations {
    std::size_t count = 0;
    std::size_t bytes = 0;  // including the heap's overhead
};

// Returns the calling thread's allocations through operator new since its start.
Allocations AllocationsSoFar();

}  // namespace orv::bench
