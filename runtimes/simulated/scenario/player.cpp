#include "runtimes/simulated/scenario/player.h"

namespace orv::simulated {

namespace {

using SharedEvent = std::shared_ptr<const ScenarioEvent>;

// Runs the event and schedules only its next repetition, so that a repeated event uses one timer at
// a time.
void RunEvent(World& world, const SharedEvent& event, INT32 left) REQUIRES(worldMutex) {
    event->action(world);
    if (left > 1) {
        world.clock.After(event->every, [&world, event, left]() REQUIRES(worldMutex) {
            RunEvent(world, event, left - 1);
        });
    }
}

void Schedule(World& world, const SharedEvent& event) REQUIRES(worldMutex) {
    Clock::Action action = [&world, event]()
                               REQUIRES(worldMutex) { RunEvent(world, event, event->times); };
    if (event->linkedTo != 0) {
        world.Find(event->linkedTo)->pendingEvents.push_back({event->delay, std::move(action)});
    } else {
        world.clock.After(event->delay, std::move(action));
    }
}

}  // namespace

bool PlayScenario(World& world, Scenario scenario, bool simulatedTime) {
    if (!world.Begin(simulatedTime)) {
        return false;
    }
    for (const MemberFault& fault : scenario.faults) {
        if (fault.hangs) {
            world.calls.Hang(fault.member.c_str(), true);
        } else {
            world.calls.FailMember(fault.member.c_str(), fault.failure);
        }
    }
    world.factoriesAgile = scenario.factoriesAgile;
    const Lock lock(worldMutex);
    // Keeps the watchers that a host has created since the reset.
    scenario.state.watchers = std::move(world.state.watchers);
    std::swap(world.state, scenario.state);
    for (const SharedEvent& event : scenario.events) {
        Schedule(world, event);
    }
    world.WakeAdvertisers();
    return true;
}

}  // namespace orv::simulated
