#pragma once

namespace orv::simulated {

// Returns whether the library's waits and activations go through the simulated world. If so, the
// world can simulate time and DLLs, and make waits fail.
bool IsLinkedIntoLibrary();

}  // namespace orv::simulated
