#pragma once

#include "runtimes/simulated/scenario/scenario.h"

namespace orv::simulated {

// Resets the world and starts the scenario. Returns false if World::Begin rejects the reset.
bool PlayScenario(World& world, Scenario scenario, bool simulatedTime);

}  // namespace orv::simulated
