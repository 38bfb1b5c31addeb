// The simulated world: its beginnings, its devices, and what happens to them.
#include "runtimes/simulated/world.h"

#include <algorithm>

#include "runtimes/simulated/advertisement.h"
#include "runtimes/simulated/gatt.h"
#include "runtimes/simulated/watcher.h"

namespace orv::simulated {

namespace {

// The most that one notification carries with the usual transfer unit.
constexpr std::size_t EchoBlock = 244;

}  // namespace

DeviceRecord::DeviceRecord(UINT64 addressOfDevice) : address(addressOfDevice) {}
DeviceRecord::~DeviceRecord() = default;

World::State::State() = default;
World::State::State(State&&) noexcept = default;
World::State& World::State::operator=(State&&) noexcept = default;
World::State::~State() = default;

bool World::State::SomeRadioOn() const {
    return std::any_of(radios.begin(), radios.end(), [](const RadioRecord& radio) {
        return radio.kind == RadioKind::Bluetooth && radio.state == RadioState::On;
    });
}

World& World::Get() {
    static World* const world = new World;
    return *world;
}

World::World() {
    objects::observer.store(&calls, std::memory_order_release);
    ArrangeDefault();
}

bool World::Begin(bool simulatedTime) {
    calls.ReleaseAll();
    // Destroyed after the mutex is free: handlers of the library are among it.
    State forgotten;
    Clock::Timers undone;
    std::vector<std::vector<Registration>> registrations;
    {
        Guard guard(mutex);
        clock.Hold(guard, false);
        if (!clock.Settle(guard)) {
            return false;
        }
        registrations.reserve(state.devices.size());
        for (auto& entry : state.devices) {
            entry.second->exists = false;
            registrations.push_back(std::move(entry.second->registrations));
        }
        std::swap(forgotten, state);
        undone = clock.Begin(guard, simulatedTime);
    }
    for (const auto& watcher : forgotten.watchers) {
        watcher->Forget();
    }
    factoriesAgile = true;
    calls.Begin();
    return true;
}

Device World::Find(Guard&, UINT64 address) const {
    const auto found = state.devices.find(address);
    return found == state.devices.end() ? nullptr : found->second;
}

Device World::Add(Guard& guard, UINT64 address) {
    if (address == 0 || Find(guard, address)) {
        return nullptr;
    }
    auto device = std::make_shared<DeviceRecord>(address);
    device->services.push_back({LinkServiceUuid, {LinkCharacteristicUuid}});
    state.devices.emplace(address, device);
    return device;
}

const Answer& World::AnswerOf(Guard&, UINT64 address, INT32 operation) const {
    static const Answer standard;
    const auto found = state.answers.find({address, operation});
    return found == state.answers.end() ? standard : found->second;
}

// ------------------------------------------------------------------------------- advertisements

INT32 World::Advertise(Guard& guard, DeviceRecord& device, INT32 packet, INT32 watcher) {
    if (watcher >= 0 && static_cast<std::size_t>(watcher) >= state.watchers.size()) {
        return -1;
    }
    return Send(guard, device, std::make_shared<const Packet>(device, packet == 1), watcher);
}

INT32 World::Send(Guard& guard, DeviceRecord& device, const SharedPacket& sent, INT32 watcher) {
    ++device.packetsSent;
    if (watcher >= 0) {
        state.watchers[static_cast<std::size_t>(watcher)]->Deliver(guard, sent);
        return 1;
    }
    if (!device.present) {
        return 0;
    }
    INT32 count = 0;
    for (const auto& candidate : state.watchers) {
        if (candidate->Accepts(guard, *sent)) {
            candidate->Deliver(guard, sent);
            ++count;
        }
    }
    device.known = device.known || (device.knownOnceHeard && count > 0);
    return count;
}

bool World::SwitchRadio(Guard& guard, std::size_t index, RadioState radioState) {
    if (index >= state.radios.size()) {
        return false;
    }
    state.radios[index].state = radioState;
    state.canScan = state.SomeRadioOn();
    if (!state.canScan) {
        for (const auto& watcher : state.watchers) {
            watcher->Abort(guard);
        }
    }
    return true;
}

bool World::SomeWatcherStarted(Guard& guard) const {
    return std::any_of(state.watchers.begin(), state.watchers.end(),
                       [&](const auto& watcher) { return watcher->IsStarted(guard); });
}

void World::StartAdvertising(Guard& guard, const Device& device) {
    const UINT32 round = ++device->advertisingRound;
    device->advertises = false;
    if (device->advertisingInterval <= Duration::zero() || !SomeWatcherStarted(guard)) {
        return;
    }
    clock.After(guard, device->advertisingInterval, [this, device, round](Guard& held) {
        if (device->exists && device->advertisingRound == round) {
            StartAdvertising(held, device);
            Advertise(held, *device, 0, -1);
            Advertise(held, *device, 1, -1);
        }
    });
    device->advertises = true;
}

void World::WakeAdvertisers(Guard& guard) {
    for (const auto& entry : state.devices) {
        if (!entry.second->advertises) {
            StartAdvertising(guard, entry.second);
        }
    }
}

// -------------------------------------------------------------------------------- notifications

void World::Post(Guard& guard, const Registration& registration,
                 const std::shared_ptr<const std::vector<BYTE>>& value) {
    auto work = [sender = registration.sender, handler = registration.handler, value] {
        sender->Raise(handler, *value);
    };
    clock.Post(guard,
               std::make_unique<Task>(Lane::Notifications, std::move(work), registration.strand));
}

INT32 World::Notify(Guard& guard, DeviceRecord& device, const std::vector<BYTE>& value,
                    INT32 registration) {
    const auto& all = device.registrations;
    if (registration >= 0 && static_cast<std::size_t>(registration) >= all.size()) {
        return -1;
    }
    const auto shared = std::make_shared<const std::vector<BYTE>>(value);
    if (registration >= 0) {
        Post(guard, all[static_cast<std::size_t>(registration)], shared);
        return 1;
    }
    for (const Registration& each : all) {
        Post(guard, each, shared);
    }
    return static_cast<INT32>(all.size());
}

template <typename Condition>
void World::NotifySome(Guard& guard, DeviceRecord& device, const std::vector<BYTE>& value,
                       Condition condition) {
    const auto shared = std::make_shared<const std::vector<BYTE>>(value);
    for (const Registration& each : device.registrations) {
        if (device.present && condition(each)) {
            Post(guard, each, shared);
        }
    }
}

void World::NotifyOpenLinks(Guard& guard, DeviceRecord& device, const std::vector<BYTE>& value) {
    NotifySome(guard, device, value, [](const auto& each) { return each.sender->IsOpen(); });
}

Duration World::Receive(Guard& guard, const Device& device, const std::vector<BYTE>& block) {
    device->writes.push_back(block);
    Echo& echo = device->echo;
    const bool notifying =
        std::any_of(device->registrations.begin(), device->registrations.end(),
                    [&](const Registration& each) { return each.sender->IsNotifying(guard); });
    if (!echo.on || !notifying) {
        return Duration::zero();
    }
    const Duration now = clock.Now(guard);
    Duration moment = std::max(now, echo.lastSent);
    for (std::size_t at = 0; at < block.size(); at += EchoBlock) {
        const std::size_t end = std::min(block.size(), at + EchoBlock);
        std::vector<BYTE> part(&block[at], &block[at] + (end - at));
        moment += echo.interval;
        clock.After(guard, moment - now, [this, device, part = std::move(part)](Guard& held) {
            if (device->exists) {
                NotifySome(held, *device, part,
                           [&](const auto& each) { return each.sender->IsNotifying(held); });
            }
        });
    }
    echo.lastSent = moment;
    return echo.interval;
}

}  // namespace orv::simulated
