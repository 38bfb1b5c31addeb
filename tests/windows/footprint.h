// Measures the heaps, handles and thread-local storage indexes of a process.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdlib>
#include <ostream>

namespace orv {

struct Footprint {
    std::size_t heapBytes = 0;
    std::size_t handles = 0;
    DWORD firstFreeIndex = 0;

    static Footprint Now() {
        Footprint now;
        HANDLE heaps[64];
        const DWORD count = GetProcessHeaps(64, heaps);
        for (DWORD i = 0; i < count; ++i) {
            HeapLock(heaps[i]);
            PROCESS_HEAP_ENTRY entry = {};
            while (HeapWalk(heaps[i], &entry)) {
                now.heapBytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
            }
            HeapUnlock(heaps[i]);
        }
        // Tries all handle values, because Wine has no function that counts handles.
        for (std::size_t value = 4; value < 0x8000; value += 4) {
            DWORD flags = 0;
            now.handles += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
        }
        now.firstFreeIndex = TlsAlloc();
        TlsFree(now.firstFreeIndex);
        return now;
    }

    bool operator==(const Footprint& other) const {
        return heapBytes == other.heapBytes && handles == other.handles &&
               firstFreeIndex == other.firstFreeIndex;
    }
};

inline std::ostream& operator<<(std::ostream& stream, const Footprint& footprint) {
    return stream << footprint.heapBytes << " bytes, " << footprint.handles
                  << " handles, first free index " << footprint.firstFreeIndex;
}

// Returns how many times to repeat an action that must leak nothing: ORV_CYCLES, or 1000.
inline int Cycles() {
    const char* wanted = std::getenv("ORV_CYCLES");
    return wanted ? std::atoi(wanted) : 1000;
}

}  // namespace orv
