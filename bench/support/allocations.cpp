// The program's operator new and delete, which count.
#include "bench/support/allocations.h"

#include <cstdlib>
#include <new>

namespace orv::bench {

static thread_local Allocations allocations;

Allocations AllocationsSoFar() {
    return allocations;
}

}  // namespace orv::bench

void* operator new(std::size_t size) {
    ++orv::bench::allocations.count;
    orv::bench::allocations.bytes += size;
    if (void* memory = std::malloc(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
