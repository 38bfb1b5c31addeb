// What the functions that arrange and question the world have in common.
#pragma once

#ifndef ORV_WORLD_BUILD
#define ORV_WORLD_BUILD
#endif
#include "quelvixwinlib_simulated.h"
#include "runtimes/simulated/world.h"

namespace orv::simulated {

constexpr INT32 NoSuchThing = -1;

// The frame of each function: nothing is thrown at the host.
template <typename Body>
INT32 Control(Body&& body) noexcept {
    try {
        return body(World::Get());
    } catch (...) {
        return NoSuchThing;
    }
}

// The same with the world's mutex held.
template <typename Body>
INT32 ControlLocked(Body&& body) noexcept {
    return Control([&](World& world) {
        Guard guard(world.mutex);
        return body(world, guard);
    });
}

// The same for a function about one device.
template <typename Body>
INT32 ControlDevice(UINT64 address, Body&& body) noexcept {
    return ControlLocked([&](World& world, Guard& guard) {
        const Device device = world.Find(guard, address);
        return device ? body(world, guard, device) : NoSuchThing;
    });
}

inline INT32 Clipped(UINT64 count) {
    return count > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<INT32>(count);
}

}  // namespace orv::simulated
