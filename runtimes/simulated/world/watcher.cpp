// A watcher of advertisements.
#include "runtimes/simulated/world/watcher.h"

#include "runtimes/simulated/world/world.h"

namespace orv::simulated {

using objects::Argument;
using objects::Call;
using objects::Make;
using objects::Member;

namespace {

objects::Class watcherClass("BluetoothLEAdvertisementWatcher");
Member putScanningModeMember(watcherClass.name, "put_ScanningMode");
Member startMember(watcherClass.name, "Start");
Member stopMember(watcherClass.name, "Stop");
Member addReceivedMember(watcherClass.name, "add_Received");

}  // namespace

SimulatedBluetoothLEAdvertisementWatcher::SimulatedBluetoothLEAdvertisementWatcher()
    : Object(watcherClass) {}

HRESULT SimulatedBluetoothLEAdvertisementWatcher::Activate(IInspectable** instance) {
    const auto watcher = Make<SimulatedBluetoothLEAdvertisementWatcher>();
    {
        World& world = World::Get();
        const Lock lock(worldMutex);
        world.state.watchers.push_back(ShareAs<PacketListener>(watcher.Get()));
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
    using Args = SimulatedBluetoothLEAdvertisementReceivedEventArgs;
    using Self = objects::Ref<SimulatedBluetoothLEAdvertisementWatcher>;
    auto work = [self = Self(this), handlers = received.All(), packet] {
        for (const auto& handler : handlers) {
            const auto args = Make<Args>(packet);
            handler->operator->()->Invoke(self.Get(), args.Get());
        }
    };
    World::Get().clock.Post(std::make_unique<Task>(Lane::Advertisements, std::move(work), strand));
}

void SimulatedBluetoothLEAdvertisementWatcher::Forget() {
    objects::Event<ReceivedHandler>::Handlers handlers;
    const Lock lock(worldMutex);
    started = false;
    handlers = received.TakeAll();
    strands.clear();
}

HRESULT SimulatedBluetoothLEAdvertisementWatcher::put_ScanningMode(BluetoothLEScanningMode value) {
    return Call(putScanningModeMember, Argument::Number(static_cast<UINT64>(value)), [&] {
        const Lock lock(worldMutex);
        mode = value;
        return S_OK;
    });
}

HRESULT SimulatedBluetoothLEAdvertisementWatcher::Start() {
    return Call(startMember, [&] {
        World& world = World::Get();
        Lock lock(worldMutex);
        if (!started && world.state.canScan) {
            started = true;
            world.WakeAdvertisers();
        }
        return S_OK;
    });
}

HRESULT SimulatedBluetoothLEAdvertisementWatcher::Stop() {
    return Call(stopMember, [&] {
        const Lock lock(worldMutex);
        started = false;
        return S_OK;
    });
}

HRESULT SimulatedBluetoothLEAdvertisementWatcher::add_Received(ReceivedHandler* handler,
                                                               EventRegistrationToken* token) {
    return Call(addReceivedMember, [&] {
        return objects::AddHandler(handler, token, [&](auto taken) {
            const Lock lock(worldMutex);
            return received.Add(std::move(taken));
        });
    });
}

}  // namespace orv::simulated
