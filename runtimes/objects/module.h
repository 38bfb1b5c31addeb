#pragma once

namespace orv::objects {

// Keeps the library file that contains this code loaded until the process ends, because threads
// that run its code never end.
void KeepModuleLoaded();

}  // namespace orv::objects
