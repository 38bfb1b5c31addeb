// How the world is joined to the library. Each way defines these in its own file.
#pragma once

namespace orv::simulated {

// The library's waits and activations go through the world itself: time can be simulated, and the
// world can refuse waits and answer as a library file.
bool IsLinkedIntoLibrary();

}  // namespace orv::simulated
