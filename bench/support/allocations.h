// Counts allocations through operator new, thread by thread.
#pragma once

#include <cstddef>

namespace orv::bench {

struct Allocations {
    std::size_t count = 0;
    std::size_t bytes = 0;
};

// Of the calling thread, since it began.
Allocations AllocationsSoFar();

}  // namespace orv::bench
