// Implements runtime.h with the Windows Runtime.
//
// The system's header comes last: its macros have names that our headers declare.
// clang-format off
#include "platform/runtime.h"

#include <string_view>

#include <windows.h>
// clang-format on

namespace orv::runtime {

namespace {

extern "C" {
// Repeats declarations of the system's headers with the types of abi/.
struct StringHeader {
    void* reserved[3];
};
HRESULT WindowsCreateStringReference(const char16_t* source, UINT32 length, StringHeader* header,
                                     HSTRING* string);
HRESULT RoGetActivationFactory(HSTRING className, const GUID& iid, void** factory);
HRESULT CoCreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner);
}

// A runtime string that refers to the caller's text without copying it.
class StringReference {
  public:
    explicit StringReference(std::u16string_view text) {
        result = WindowsCreateStringReference(text.data(), static_cast<UINT32>(text.size()),
                                              &header, &handle);
    }
    StringReference(const StringReference&) = delete;
    StringReference& operator=(const StringReference&) = delete;

    HRESULT result;
    HSTRING handle = nullptr;

  private:
    StringHeader header;
};

HRESULT LastErrorResult() {
    const auto error = static_cast<HRESULT>(GetLastError());
    if (error == 0) {
        return E_FAIL;
    }
    return error < 0 ? error : Hresult(0x80070000u | (static_cast<UINT32>(error) & 0xFFFFu));
}

template <typename Function>
Function FindExport(HMODULE module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// Requests a factory from a loaded library. Fails if the library lacks the export, the class or the
// interface.
HRESULT AskLibrary(HMODULE module, HSTRING className, const GUID& iid, void** factory) {
    using DllGetActivationFactory = HRESULT (*)(HSTRING, IActivationFactory**);
    const auto ask = FindExport<DllGetActivationFactory>(module, "DllGetActivationFactory");
    if (!ask) {
        return REGDB_E_CLASSNOTREG;
    }
    IActivationFactory* found = nullptr;
    HRESULT code = ask(className, &found);
    if (Failed(code)) {
        return code;
    }
    if (!found) {
        return REGDB_E_CLASSNOTREG;
    }
    code = found->QueryInterface(&iid, factory);
    found->Release();
    return code;
}

}  // namespace

HRESULT GetActivationFactory(const char16_t* className, const GUID& iid, void** factory) {
    const StringReference name{std::u16string_view(className)};
    return Failed(name.result) ? name.result : RoGetActivationFactory(name.handle, iid, factory);
}

HRESULT JoinMultithreadedApartment() {
    using CoIncrementMTAUsage = HRESULT (*)(void** cookie);
    const HMODULE combase = LoadLibraryExW(L"combase.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    const auto join =
        combase ? FindExport<CoIncrementMTAUsage>(combase, "CoIncrementMTAUsage") : nullptr;
    void* cookie = nullptr;
    return join ? join(&cookie) : CO_E_NOTINITIALIZED;
}

// Searches the system directory only, so that a file planted in the application's or the current
// directory is not loaded.
HRESULT GetLibraryFactory(const char16_t* library, const char16_t* className, const GUID& iid,
                          void** factory) {
    const StringReference name{std::u16string_view(className)};
    if (Failed(name.result)) {
        return name.result;
    }
    const HMODULE module = LoadLibraryExW(reinterpret_cast<const wchar_t*>(library), nullptr,
                                          LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!module) {
        return LastErrorResult();
    }
    const HRESULT code = AskLibrary(module, name.handle, iid, factory);
    if (Failed(code)) {
        FreeLibrary(module);
    }
    return code;
}

HRESULT CreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner) {
    return CoCreateFreeThreadedMarshaler(outer, inner);
}

HRESULT CreateKernelEvent(EventHandle* event) {
    *event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return *event ? S_OK : LastErrorResult();
}

void SetKernelEvent(EventHandle event) {
    SetEvent(event);
}

void WaitForKernelEvent(EventHandle event, UINT32 limitMs) {
    WaitForSingleObject(event, limitMs);
}

void CloseKernelEvent(EventHandle event) {
    CloseHandle(event);
}

INT64 SystemTimeMs() noexcept {
    constexpr INT64 TicksPerMs = 10'000;  // a tick is 100 ns, counted from 1601
    constexpr INT64 Until1970Ms = 11'644'473'600'000;
    FILETIME time;
    GetSystemTimePreciseAsFileTime(&time);
    const INT64 ticks = static_cast<INT64>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
    return ticks / TicksPerMs - Until1970Ms;
}

}  // namespace orv::runtime
