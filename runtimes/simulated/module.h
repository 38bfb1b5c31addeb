// The file that this code was loaded from.
#pragma once

namespace orv::simulated {

// Keeps it loaded until the process ends: threads that run its code never end.
void KeepModuleLoaded();

}  // namespace orv::simulated
