#pragma once

#include <functional>
#include <string>

namespace orv::doctor::system {

// Returns a name such as "Windows 10.0.19045" or "Linux 6.1.0 x86_64".
std::string Name();
// Returns whether the documents list this system as supported.
bool IsSupported();

// Calls `body` on a new thread in a single-threaded COM apartment. If that is not possible, returns
// false without calling it.
bool RunInApartment(const std::function<void()>& body);

}  // namespace orv::doctor::system
