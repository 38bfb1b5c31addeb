// Templates that implement the OrvWorld_ functions.
#pragma once

#ifndef ORV_WORLD_BUILD
#define ORV_WORLD_BUILD
#endif
#include "quelvixwinlib_simulated.h"
#include "runtimes/simulated/world/world.h"

namespace orv::simulated {

constexpr INT32 NoSuchThing = -1;

// Runs `body`. Returns -1 if it throws.
template <typename Body>
INT32 Control(Body&& body) noexcept {
    try {
        return body(World::Get());
    } catch (...) {
        return NoSuchThing;
    }
}

// Like Control, but holds the world's mutex.
template <typename Body>
INT32 ControlLocked(Body&& body) noexcept {
    return Control([&](World& world) {
        const Lock lock(worldMutex);
        return body(world);
    });
}

// Like ControlLocked, for the device with this address. Returns -1 if it does not exist.
template <typename Body>
INT32 ControlDevice(UINT64 address, Body&& body) noexcept {
    return ControlLocked([&](World& world) REQUIRES(worldMutex) {
        const Device device = world.Find(address);
        return device ? body(world, device) : NoSuchThing;
    });
}

// Sets a property of a device. Returns -1 if the device does not exist or `set` returns false.
template <typename Set>
INT32 SetProperty(UINT64 address, Set&& set) noexcept {
    return ControlDevice(address, [&](World&, const Device& device) REQUIRES(worldMutex) {
        return set(*device) ? 0 : NoSuchThing;
    });
}

inline INT32 Clipped(UINT64 count) {
    return count > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<INT32>(count);
}

}  // namespace orv::simulated
