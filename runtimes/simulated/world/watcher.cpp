#include "runtimes/simulated/world/watcher.h"

#include "runtimes/simulated/world/world.h"

namespace orv::simulated {

using objects::Make;

HRESULT SimulatedBluetoothLEAdvertisementWatcher::Activate(IInspectable** instance) {
    const auto watcher = Make<SimulatedBluetoothLEAdvertisementWatcher>();
    {
        World& world = World::Get();
        const Lock lock(worldMutex);
        world.state.watchers.push_back(objects::ShareAs<PacketListener>(watcher.Get()));
    }
    return Give(instance, watcher);
}

bool SimulatedBluetoothLEAdvertisementWatcher::Accepts(const Packet& packet) const {
    return started && (!packet.isScanResponse || mode == BluetoothLEScanningMode::Active);
}

void SimulatedBluetoothLEAdvertisementWatcher::Deliver(const SharedPacket& packet) {
    auto& strand = strands[packet->address];
    if (!strand) {
        strand = std::make_shared<Strand>();
    }
    using Self = objects::Ref<SimulatedBluetoothLEAdvertisementWatcher>;
    auto work = [self = Self(this), handlers = received.All(), packet] {
        for (const auto& handler : handlers) {
            handler->operator->()->Invoke(self.Get(), objects::MakeReceivedArgs(packet).Get());
        }
    };
    World::Get().clock.Post(std::make_unique<Task>(Lane::Advertisements, std::move(work), strand));
}

void SimulatedBluetoothLEAdvertisementWatcher::Forget() {
    objects::Event<objects::ReceivedHandler>::Handlers handlers;
    const Lock lock(worldMutex);
    started = false;
    handlers = received.TakeAll();
    strands.clear();
}

void SimulatedBluetoothLEAdvertisementWatcher::SetMode(BluetoothLEScanningMode value) {
    const Lock lock(worldMutex);
    mode = value;
}

void SimulatedBluetoothLEAdvertisementWatcher::Switch(bool on) {
    World& world = World::Get();
    const Lock lock(worldMutex);
    if (on && !started && world.state.canScan) {
        started = true;
        world.WakeAdvertisers();
    } else if (!on) {
        started = false;
    }
}

EventRegistrationToken SimulatedBluetoothLEAdvertisementWatcher::AddHandler(
    objects::SharedHandler<objects::ReceivedHandler> handler) {
    const Lock lock(worldMutex);
    return received.Add(std::move(handler));
}

}  // namespace orv::simulated
