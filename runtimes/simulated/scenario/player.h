// Configures the world from a scenario.
#pragma once

#include "runtimes/simulated/scenario/scenario.h"

namespace orv::simulated {

// Returns false, without a reset, if a thread of the world calls it or a task does not finish.
bool PlayScenario(World& world, Scenario scenario, bool simulatedTime);

}  // namespace orv::simulated
