// Turns the world into what a scenario says.
#include "runtimes/simulated/scenario_player.h"

#include "runtimes/simulated/gatt.h"
#include "runtimes/simulated/watcher.h"

namespace orv::simulated {

namespace {

using SharedEvent = std::shared_ptr<const ScenarioEvent>;

// A repeated event is due once at a time, however often it comes.
void Happen(World& world, Guard& guard, const SharedEvent& event, INT32 left) {
    event->happening(world, guard);
    if (left > 1) {
        world.clock.After(guard, event->every, [&world, event, left](Guard& held) {
            Happen(world, held, event, left - 1);
        });
    }
}

void Schedule(World& world, Guard& guard, const SharedEvent& event) {
    Clock::Action action = [&world, event](Guard& held) {
        Happen(world, held, event, event->times);
    };
    if (event->linkedTo != 0) {
        world.Find(guard, event->linkedTo)->recording.push_back({event->delay, std::move(action)});
    } else {
        world.clock.After(guard, event->delay, std::move(action));
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
    Guard guard(world.mutex);
    // What a host has asked for since the world began anew stays.
    scenario.state.watchers = std::move(world.state.watchers);
    std::swap(world.state, scenario.state);
    for (const SharedEvent& event : scenario.events) {
        Schedule(world, guard, event);
    }
    world.WakeAdvertisers(guard);
    return true;
}

}  // namespace orv::simulated
