#include "runtimes/simulated/exports/control.h"
#include "runtimes/simulated/exports/flavour.h"

using namespace orv;
using namespace orv::simulated;

int32_t OrvWorld_Reset(int32_t simulatedTime) {
    return Control([&](World& world) {
        const bool simulated = simulatedTime != 0 && IsLinkedIntoLibrary();
        if (!world.Begin(simulated)) {
            return NoSuchThing;
        }
        return simulatedTime != 0 && !simulated ? 1 : 0;
    });
}

int32_t OrvWorld_Default(void) {
    return Control([](World& world) {
        if (!world.Begin(false)) {
            return NoSuchThing;
        }
        world.ArrangeDefault();
        return 0;
    });
}

int32_t OrvWorld_Settle(void) {
    return ControlLocked(
        [](World& world) REQUIRES(worldMutex) { return world.clock.Settle() ? 0 : NoSuchThing; });
}

int64_t OrvWorld_Now(void) {
    try {
        World& world = World::Get();
        const Lock lock(worldMutex);
        return std::chrono::duration_cast<std::chrono::milliseconds>(world.clock.Now()).count();
    } catch (...) {
        return NoSuchThing;
    }
}

int32_t OrvWorld_TimeIsSimulated(void) {
    return ControlLocked([](World& world)
                             REQUIRES(worldMutex) { return world.clock.IsSimulated() ? 1 : 0; });
}

namespace {

INT32 HoldTime(bool hold) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        if (!world.clock.IsSimulated()) {
            return NoSuchThing;
        }
        world.clock.Hold(hold);
        return 0;
    });
}

}  // namespace

int32_t OrvWorld_HoldTime(void) {
    return HoldTime(true);
}

int32_t OrvWorld_ReleaseTime(void) {
    return HoldTime(false);
}

int32_t OrvWorld_PassTime(int32_t milliseconds) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        if (milliseconds < 0) {
            return NoSuchThing;
        }
        return world.clock.Pass(std::chrono::milliseconds(milliseconds)) ? 0 : NoSuchThing;
    });
}

int32_t OrvWorld_AwaitWaits(int32_t count) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        return IsLinkedIntoLibrary() && world.clock.AwaitWaits(count) ? 0 : NoSuchThing;
    });
}

int32_t OrvWorld_SetAdapter(int32_t present) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        world.state.adapter = present != 0;
        return 0;
    });
}

int32_t OrvWorld_AddRadio(int32_t kind, int32_t state) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        world.state.radios.push_back(
            {static_cast<RadioKind>(kind), static_cast<RadioState>(state)});
        return static_cast<INT32>(world.state.radios.size() - 1);
    });
}

int32_t OrvWorld_SetRadio(int32_t index, int32_t kind, int32_t state) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        auto& radios = world.state.radios;
        if (index < 0 || static_cast<std::size_t>(index) >= radios.size()) {
            return NoSuchThing;
        }
        radios[static_cast<std::size_t>(index)] = {static_cast<RadioKind>(kind),
                                                   static_cast<RadioState>(state)};
        return 0;
    });
}

int32_t OrvWorld_SwitchRadio(int32_t index, int32_t state) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        const bool isThere = index >= 0 && world.SwitchRadio(static_cast<std::size_t>(index),
                                                             static_cast<RadioState>(state));
        return isThere ? 0 : NoSuchThing;
    });
}

int32_t OrvWorld_SetFactoriesAgile(int32_t agile) {
    return Control([&](World& world) {
        world.factoriesAgile = agile != 0;
        return 0;
    });
}

int32_t OrvWorld_SetActivationLibrary(const char* name) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        if (!IsLinkedIntoLibrary()) {
            return NoSuchThing;
        }
        world.state.activationLibrary = name == nullptr ? "" : name;
        return 0;
    });
}

int32_t OrvWorld_FailWaits(int32_t count, int32_t code) {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        if (!IsLinkedIntoLibrary() || count < 0) {
            return NoSuchThing;
        }
        world.state.refusedWaits = count;
        world.state.waitRefusal = code;
        return 0;
    });
}
