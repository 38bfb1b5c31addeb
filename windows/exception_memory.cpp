// Provides memory for exceptions. These functions of the Itanium C++ ABI replace two object files
// of the static C++ library, which use a 73 kB pool with a mutex of a thread library, and emulated
// thread-local storage. Both need the heap, even to report an exhausted heap.
//
// Here the memory is in the image's thread-local section. The system's loader creates a zeroed copy
// of it for each thread before the thread can call the library, and frees the copy when the thread
// ends. So throwing needs neither the heap nor a lock nor a thread-local index.
//
// An exception must stay on its thread. The library does not use std::exception_ptr, which could
// move it. Code that uses it would not link, because only a replaced object file defines
// __cxa_allocate_dependent_exception.
#include <cxxabi.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>

extern "C" {
extern std::uint32_t _tls_index;  // the index of this image's thread-local block
extern char* _tls_start;          // first byte of the thread-local section
}

namespace {

// Returns the size of the header that the runtime writes before each thrown object, measured with a
// test object.
std::size_t MeasureHeader() {
    constexpr std::size_t Room = 512;
    alignas(std::max_align_t) unsigned char scratch[2 * Room] = {};
    void* const object = scratch + Room;
    const void* header = abi::__cxa_init_primary_exception(object, nullptr, nullptr);
    return static_cast<std::size_t>(static_cast<unsigned char*>(object) -
                                    static_cast<const unsigned char*>(header));
}

const std::size_t HeaderSize = MeasureHeader();

struct alignas(std::max_align_t) Slot {
    unsigned char bytes[176];  // space for the header and an object of 48 bytes
};

// The exceptions of one thread. An export needs up to three exceptions at once: its own failure,
// the failure to log it, and the failure to log the second failure.
struct alignas(std::max_align_t) ThreadRecord {
    void* globals[4];  // storage of __cxa_eh_globals: a pointer and a counter
    bool used[4];
    Slot slots[4];
};

// Each thread has a copy of this variable. Only the variable's offset in the section is used.
__attribute__((section(".tls$ORV"), used)) ThreadRecord initial = {};

// Returns the calling thread's record. Reads the list of thread-local blocks from the thread's
// environment block, as native thread-local storage does.
ThreadRecord& OwnRecord() {
    char** blocks = nullptr;
    __asm__("movq %%gs:0x58, %0" : "=r"(blocks));
    const auto place =
        reinterpret_cast<std::uintptr_t>(&initial) - reinterpret_cast<std::uintptr_t>(&_tls_start);
    return *reinterpret_cast<ThreadRecord*>(blocks[_tls_index] + place);
}

unsigned char* TakeSlot(std::size_t size) {
    ThreadRecord& record = OwnRecord();
    for (std::size_t i = 0; size <= sizeof(Slot) && i < std::size(record.used); ++i) {
        if (!record.used[i]) {
            record.used[i] = true;
            return record.slots[i].bytes;
        }
    }
    return nullptr;
}

bool GiveSlotBack(const void* memory) {
    ThreadRecord& record = OwnRecord();
    for (std::size_t i = 0; i < std::size(record.used); ++i) {
        if (record.slots[i].bytes == memory) {
            record.used[i] = false;
            return true;
        }
    }
    return false;
}

}  // namespace

namespace __cxxabiv1 {

extern "C" {

// Uses the heap if the object is too large for a slot or all slots are used. The library's own
// exceptions always get a slot.
void* __cxa_allocate_exception(std::size_t size) noexcept {
    unsigned char* memory = TakeSlot(HeaderSize + size);
    if (!memory) {
        memory = static_cast<unsigned char*>(std::malloc(HeaderSize + size));
    }
    if (!memory) {
        std::terminate();
    }
    std::memset(memory, 0, HeaderSize);
    return memory + HeaderSize;
}

void __cxa_free_exception(void* object) noexcept {
    unsigned char* const memory = static_cast<unsigned char*>(object) - HeaderSize;
    if (!GiveSlotBack(memory)) {
        std::free(memory);
    }
}

__cxa_eh_globals* __cxa_get_globals() noexcept {
    return reinterpret_cast<__cxa_eh_globals*>(OwnRecord().globals);
}

__cxa_eh_globals* __cxa_get_globals_fast() noexcept {
    return __cxa_get_globals();
}
}

}  // namespace __cxxabiv1
