#include "windows/allocations.h"

#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include "windows/library.h"

namespace orv {
namespace {

enum Plan { None, One, AllFrom };
std::atomic<Plan> plan{None};
std::atomic<int> left{0};
std::atomic<int> failed{0};

bool FailsNow() {
    const Plan current = plan;
    if (current == None) {
        return false;
    }
    const int before = left--;
    const bool fails = current == One ? before == 1 : before <= 1;
    failed += fails ? 1 : 0;
    return fails;
}

void* Malloc(std::size_t size) {
    return FailsNow() ? nullptr : std::malloc(size);
}
void* Calloc(std::size_t count, std::size_t size) {
    return FailsNow() ? nullptr : std::calloc(count, size);
}
void* Realloc(void* block, std::size_t size) {
    return FailsNow() ? nullptr : std::realloc(block, size);
}
void* AllocateOnHeap(HANDLE heap, DWORD flags, SIZE_T size) {
    return FailsNow() ? nullptr : HeapAlloc(heap, flags, size);
}
void* AllocateLocal(UINT flags, SIZE_T size) {
    return FailsNow() ? nullptr : LocalAlloc(flags, size);
}
void* AllocatePages(void* address, SIZE_T size, DWORD type, DWORD rights) {
    return FailsNow() ? nullptr : VirtualAlloc(address, size, type, rights);
}

struct Row {
    const char* name;
    void* replacement;
};

template <typename Function>
Row Replaced(const char* name, Function* replacement) {
    return {name, reinterpret_cast<void*>(replacement)};
}

const Row Rows[] = {Replaced("malloc", Malloc),
                    Replaced("calloc", Calloc),
                    Replaced("realloc", Realloc),
                    Replaced("HeapAlloc", AllocateOnHeap),
                    Replaced("LocalAlloc", AllocateLocal),
                    Replaced("VirtualAlloc", AllocatePages)};

void Write(void** place, void* value) {
    DWORD before = 0;
    VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before);
    *place = value;
    VirtualProtect(place, sizeof *place, before, &before);
}

template <typename T>
T* At(HMODULE module, std::size_t offset) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(module) + offset);
}

}  // namespace

int ReplaceAllocations() {
    const HMODULE module = GetModuleHandleW(Library::File);
    const auto* headers = At<IMAGE_NT_HEADERS64>(
        module, static_cast<std::size_t>(At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
    const IMAGE_DATA_DIRECTORY& imports =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    int replaced = 0;
    for (auto* file = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress); file->Name;
         ++file) {
        auto* name = At<IMAGE_THUNK_DATA64>(module, file->OriginalFirstThunk);
        auto* place = At<void*>(module, file->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++place) {
            const auto* imported = At<IMAGE_IMPORT_BY_NAME>(module, name->u1.AddressOfData);
            for (const Row& row : Rows) {
                if (std::strcmp(row.name, imported->Name) == 0) {
                    Write(place, row.replacement);
                    ++replaced;
                }
            }
        }
    }
    return replaced;
}

static void Begin(Plan next, int n) {
    failed = 0;
    left = n;
    plan = next;
}

void FailAllocation(int n) {
    Begin(One, n);
}

void FailAllocationsFrom(int n) {
    Begin(AllFrom, n);
}

int EndFailures() {
    plan = None;
    return failed;
}

}  // namespace orv
