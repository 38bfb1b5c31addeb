#include <algorithm>

#include "runtimes/simulated/world/world.h"

namespace orv::simulated {

INT32 World::Advertise(DeviceRecord& device, INT32 packet, INT32 watcher) {
    if (watcher >= 0 && static_cast<std::size_t>(watcher) >= state.watchers.size()) {
        return -1;
    }
    return Send(device, std::make_shared<const Packet>(PacketOf(device, packet == 1)), watcher);
}

INT32 World::Send(DeviceRecord& device, const SharedPacket& sent, INT32 watcher) {
    ++device.packetsSent;
    if (watcher >= 0) {
        state.watchers[static_cast<std::size_t>(watcher)]->Deliver(sent);
        return 1;
    }
    if (!device.present) {
        return 0;
    }
    INT32 count = 0;
    for (const auto& candidate : state.watchers) {
        if (candidate->Accepts(*sent)) {
            candidate->Deliver(sent);
            ++count;
        }
    }
    if (device.known == Known::OnceHeard && count > 0) {
        device.known = Known::Yes;
    }
    return count;
}

bool World::SomeWatcherStarted() const {
    return std::any_of(state.watchers.begin(), state.watchers.end(),
                       [](const auto& watcher)
                           REQUIRES(worldMutex) { return watcher->IsStarted(); });
}

void World::StartAdvertising(const Device& device) {
    const UINT32 round = ++device->advertisingRound;
    device->advertises = false;
    if (device->advertisingInterval <= Duration::zero() || !SomeWatcherStarted()) {
        return;
    }
    clock.After(device->advertisingInterval, [this, device, round]() REQUIRES(worldMutex) {
        if (device->exists && device->advertisingRound == round) {
            StartAdvertising(device);
            Advertise(*device, 0, -1);
            Advertise(*device, 1, -1);
        }
    });
    device->advertises = true;
}

void World::WakeAdvertisers() {
    for (const auto& entry : state.devices) {
        if (!entry.second->advertises) {
            StartAdvertising(entry.second);
        }
    }
}

}  // namespace orv::simulated
