// Loads the library by its name, like a host. The program itself links only the simulated world.
#pragma once

#include <windows.h>

#include "quelvixwinlib.h"

namespace orv {

class Library {
  public:
    static constexpr wchar_t File[] = L"quelvixwinlib.dll";

    static bool IsLoaded() { return GetModuleHandleW(File) != nullptr; }

    void Free() const { FreeLibrary(module); }

    template <typename Function>
    Function Export(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    }

    const HMODULE module = LoadLibraryW(File);
};

#define EXPORT(library, name) ((library).Export<decltype(&name)>(#name))

}  // namespace orv
