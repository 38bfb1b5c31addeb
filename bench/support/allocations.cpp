#include "bench/support/allocations.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace orv::bench {

static thread_local Allocations allocations;

Allocations AllocationsSoFar() {
    return allocations;
}

}  // namespace orv::bench

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size);
    if (!memory) {
        throw std::bad_alloc();
    }
    constexpr std::size_t HeapsOwn = sizeof(std::size_t);  // overhead of each block
    ++orv::bench::allocations.count;
    orv::bench::allocations.bytes += malloc_usable_size(memory) + HeapsOwn;
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
