#include "tests/radio/allocations.h"

#include <cerrno>
#include <cstdlib>
#include <new>

namespace orv::radio {
namespace {

// For each kind of thread, the number of the allocation that fails (1 is the next one); 0 or less
// if none fails. Not std::atomic, whose functions a sanitizer would instrument before it is ready.
int left[2];
thread_local Threads thisThread = Threads::OfLibrary;

bool FailsNow() {
    int& ours = left[static_cast<int>(thisThread)];
    if (__atomic_load_n(&ours, __ATOMIC_SEQ_CST) <= 0 ||
        __atomic_sub_fetch(&ours, 1, __ATOMIC_SEQ_CST) != 0) {
        return false;
    }
    errno = ENOMEM;
    return true;
}

}  // namespace

void MarkTestThread() {
    thisThread = Threads::OfTest;
}

void FailAllocation(int n, Threads threads) {
    __atomic_store_n(&left[static_cast<int>(threads)], n, __ATOMIC_SEQ_CST);
}

bool HasAllocationFailed(Threads threads) {
    return __atomic_load_n(&left[static_cast<int>(threads)], __ATOMIC_SEQ_CST) <= 0;
}

}  // namespace orv::radio

#ifdef ORV_SANITIZED
#define ORV_ORIGINAL(name) __interceptor_##name  // the sanitizer's function
#else
#define ORV_ORIGINAL(name) __libc_##name
#endif

#pragma GCC visibility push(default)  // shared libraries use the functions below, too

extern "C" {

void* ORV_ORIGINAL(malloc)(std::size_t size);
void* ORV_ORIGINAL(calloc)(std::size_t count, std::size_t size);
void* ORV_ORIGINAL(realloc)(void* block, std::size_t size);

void* malloc(std::size_t size) noexcept {
    return orv::radio::FailsNow() ? nullptr : ORV_ORIGINAL(malloc)(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    return orv::radio::FailsNow() ? nullptr : ORV_ORIGINAL(calloc)(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
    return orv::radio::FailsNow() ? nullptr : ORV_ORIGINAL(realloc)(block, size);
}
}

// Replaces operator new, because that of a sanitizer does not call malloc. With the thread
// sanitizer, this is impossible: only allocations of C libraries such as sd-bus fail.
#ifdef ORV_OPERATORS_REPLACEABLE
// dlopen of glibc leaks memory if an allocation fails.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:dl_open_worker_begin";
}

void* operator new(std::size_t size) {
    void* const memory = malloc(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return malloc(size);
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void operator delete(void* memory) noexcept {
    free(memory);
}
void operator delete[](void* memory) noexcept {
    free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    free(memory);
}
#endif
