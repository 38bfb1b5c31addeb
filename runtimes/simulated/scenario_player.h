// Turns the world into what a scenario says.
#pragma once

#include "runtimes/simulated/scenario.h"

namespace orv::simulated {

// False when a thread of the world called it: then nothing has happened.
bool PlayScenario(World& world, Scenario scenario, bool simulatedTime);

}  // namespace orv::simulated
