// States how the world is connected to the library. Each flavour of the library defines the
// function in its own file.
#pragma once

namespace orv::simulated {

// Returns whether the library's waits and activations go through the world. If so, time can be
// simulated, and the world can make waits fail and simulate library files.
bool IsLinkedIntoLibrary();

}  // namespace orv::simulated
