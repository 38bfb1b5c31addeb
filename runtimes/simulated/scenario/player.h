#pragma once

#include "runtimes/simulated/scenario/scenario.h"

namespace orv::simulated {

// Resets the world and starts the scenario. Returns false, without a reset, on a thread of the
// world, or if pending answers and events make no progress for 30 s.
bool PlayScenario(World& world, Scenario scenario, bool simulatedTime);

}  // namespace orv::simulated
