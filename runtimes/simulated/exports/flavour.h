#pragma once

namespace orv::simulated {

// Returns whether the library's waits and activations go through the simulated world. If so, the
// world can simulate time and DLLs, and make waits fail. Defined in linked_runtime.cpp and
// dll_activation_windows.cpp.
bool IsLinkedIntoLibrary();

}  // namespace orv::simulated
