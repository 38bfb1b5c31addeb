// A watcher of advertisements.
#include "runtimes/simulated/watcher.h"

namespace orv::simulated {

using objects::Argument;
using objects::Call;
using objects::Make;
using objects::Member;

namespace {

objects::Class watcherClass("BluetoothLEAdvertisementWatcher");

}  // namespace

SimulatedBluetoothLEAdvertisementWatcher::SimulatedBluetoothLEAdvertisementWatcher()
    : Object(watcherClass) {}

HRESULT SimulatedBluetoothLEAdvertisementWatcher::Activate(IInspectable** instance) {
    const auto watcher = Make<SimulatedBluetoothLEAdvertisementWatcher>();
    {
        World& world = World::Get();
        const Guard guard(world.mutex);
        world.state.watchers.push_back(watcher);
    }
    return Give(instance, watcher);
}

bool SimulatedBluetoothLEAdvertisementWatcher::Accepts(Guard&, const Packet& packet) const {
    return started && (!packet.isScanResponse || mode == BluetoothLEScanningMode::Active);
}

void SimulatedBluetoothLEAdvertisementWatcher::Deliver(Guard& guard, const SharedPacket& packet) {
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
    World::Get().clock.Post(guard,
                            std::make_unique<Task>(Lane::Advertisements, std::move(work), strand));
}

void SimulatedBluetoothLEAdvertisementWatcher::Forget() {
    objects::Event<ReceivedHandler>::Handlers handlers;
    const Guard guard(World::Get().mutex);
    started = false;
    handlers = received.TakeAll();
    strands.clear();
}

HRESULT SimulatedBluetoothLEAdvertisementWatcher::put_ScanningMode(BluetoothLEScanningMode value) {
    static Member member(watcherClass.name, "put_ScanningMode");
    return Call(member, Argument::Number(static_cast<UINT64>(value)), [&] {
        const Guard guard(World::Get().mutex);
        mode = value;
        return S_OK;
    });
}

HRESULT SimulatedBluetoothLEAdvertisementWatcher::Start() {
    static Member member(watcherClass.name, "Start");
    return Call(member, [&] {
        World& world = World::Get();
        Guard guard(world.mutex);
        if (!started && world.state.canScan) {
            started = true;
            world.WakeAdvertisers(guard);
        }
        return S_OK;
    });
}

HRESULT SimulatedBluetoothLEAdvertisementWatcher::Stop() {
    static Member member(watcherClass.name, "Stop");
    return Call(member, [&] {
        const Guard guard(World::Get().mutex);
        started = false;
        return S_OK;
    });
}

HRESULT SimulatedBluetoothLEAdvertisementWatcher::add_Received(ReceivedHandler* handler,
                                                               EventRegistrationToken* token) {
    static Member member(watcherClass.name, "add_Received");
    return Call(member, [&] {
        if (handler == nullptr || token == nullptr) {
            return E_POINTER;
        }
        auto taken = objects::TakeHandler(handler);
        const Guard guard(World::Get().mutex);
        *token = received.Add(std::move(taken));
        return S_OK;
    });
}

}  // namespace orv::simulated
