// The runtime that Windows itself provides.
//
// The system's header comes last: it makes macros of names that ours declare.
// clang-format off
#include "platform/runtime.h"

#include <chrono>
#include <string_view>

#include <windows.h>
// clang-format on

namespace orv::runtime {

namespace {

extern "C" {
// From the runtime's own headers, with the types of abi/.
struct StringHeader {
    void* reserved[3];
};
HRESULT WindowsCreateStringReference(const char16_t* source, UINT32 length, StringHeader* header,
                                     HSTRING* string);
HRESULT RoGetActivationFactory(HSTRING className, const GUID& iid, void** factory);
HRESULT CoCreateFreeThreadedMarshaler(IUnknown* outer, IUnknown** inner);
}

// A runtime string over text that somebody else keeps: nothing is copied, nothing to delete.
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

// A code of the system's last error. Never a success, so that a failure is never taken for one.
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

// The file's own answer. A library without the export, or one that knows the class by another
// interface only, is no answer.
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

// The system directory alone: a bare name looked for beside the application or in the current
// folder would let anyone plant code there.
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
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace orv::runtime
