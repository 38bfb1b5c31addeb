#pragma once

namespace orv::simulated {

// Returns whether the library's waits and activations go through the simulated world. If so, time
// can be simulated, and the world can make waits fail and simulate library files. Each flavour of
// the library defines this function in its own file.
bool IsLinkedIntoLibrary();

}  // namespace orv::simulated
