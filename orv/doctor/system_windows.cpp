#include <objbase.h>
#include <windows.h>

#include <thread>

#include "orv/doctor/system.h"

namespace orv::doctor::system {

namespace {

constexpr DWORD OldestBuild = 15063;  // Windows 10 version 1703

// Uses RtlGetVersion, because GetVersionEx reports an older version to programs without a manifest.
RTL_OSVERSIONINFOW Version() {
    RTL_OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof version;
    const auto get = reinterpret_cast<LONG(WINAPI*)(RTL_OSVERSIONINFOW*)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
    if (get) {
        get(&version);
    }
    return version;
}

}  // namespace

std::string Name() {
    const RTL_OSVERSIONINFOW version = Version();
    return "Windows " + std::to_string(version.dwMajorVersion) + "." +
           std::to_string(version.dwMinorVersion) + "." + std::to_string(version.dwBuildNumber);
}

bool IsSupported() {
    return Version().dwMajorVersion >= 10 && Version().dwBuildNumber >= OldestBuild;
}

bool RunInApartment(const std::function<void()>& body) {
    bool isApartment = false;
    std::thread([&] {
        isApartment = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        if (isApartment) {
            body();
            CoUninitialize();
        }
    }).join();
    return isApartment;
}

}  // namespace orv::doctor::system
