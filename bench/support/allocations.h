#pragma once

#include <cstddef>

namespace orv::bench {

struct Allocations {
    std::size_t count = 0;
    std::size_t bytes = 0;  // including the heap's overhead
};

// Returns the allocations through operator new that the calling thread has made since it started.
Allocations AllocationsSoFar();

}  // namespace orv::bench
