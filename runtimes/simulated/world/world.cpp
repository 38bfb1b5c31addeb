#include "runtimes/simulated/world/world.h"

#include <algorithm>

#include "platform/abi/gatt.h"
#include "quelvixwinlib_simulated.h"

namespace orv::simulated {

namespace {

// Delays the operation until the previous operation of the device has ended.
void Queue(Answer& answer, DeviceRecord& device, Duration now) REQUIRES(worldMutex) {
    const Duration begin = std::max(now, device.busyUntil);
    if (begin > now && answer.timing != Answer::Timing::Never) {
        answer.delay = begin - now +
                       (answer.timing == Answer::Timing::After ? answer.delay : Duration::zero());
        answer.timing = Answer::Timing::After;
    }
    if (answer.timing == Answer::Timing::Never) {
        device.busyUntil = Duration::max();
    } else if (answer.timing == Answer::Timing::After) {
        device.busyUntil = now + answer.delay;
    }
}

}  // namespace

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
    // Destroyed after the lock is released, because releasing the library's handlers may call the
    // world.
    State forgotten;
    Clock::Timers undone;
    std::vector<std::vector<Registration>> registrations;
    {
        const Lock lock(worldMutex);
        clock.Hold(false);
        if (!clock.Settle()) {
            return false;
        }
        registrations.reserve(state.devices.size());
        for (auto& entry : state.devices) {
            DeviceRecord& device = *entry.second;
            device.exists = false;
            registrations.push_back(std::move(device.registrations));
        }
        std::swap(forgotten, state);
        undone = clock.Begin(simulatedTime);
    }
    for (const auto& watcher : forgotten.watchers) {
        watcher->Forget();
    }
    factoriesAgile = true;
    calls.Begin();
    return true;
}

Device World::Find(UINT64 address) const {
    const auto found = state.devices.find(address);
    return found == state.devices.end() ? nullptr : found->second;
}

Device World::Add(UINT64 address) {
    if (address == 0 || Find(address)) {
        return nullptr;
    }
    auto device = std::make_shared<DeviceRecord>(address);
    device->services.push_back({LinkServiceUuid, {LinkCharacteristicUuid}});
    state.devices.emplace(address, device);
    return device;
}

const Answer& World::AnswerOf(UINT64 address, INT32 operation) const {
    static const Answer standard;
    const auto found = state.answers.find({address, operation});
    return found == state.answers.end() ? standard : found->second;
}

Answer World::AnswerOfDevice(const Device& device, INT32 operation) {
    if (!device->exists) {
        return Answer::Silence();
    }
    Answer answer = AnswerOf(device->address, operation);
    if (operation == OrvOperation_RequestAccess) {
        return answer;  // the system answers this operation, not the device
    }
    if (!device->present) {
        answer.timing = Answer::Timing::After;
        answer.delay = AbsenceLimit;
        answer.status = static_cast<INT32>(GattCommunicationStatus::Unreachable);
    }
    if (device->oneAtATime && answer.startCode == S_OK) {
        Queue(answer, *device, clock.Now());
    }
    return answer;
}

}  // namespace orv::simulated
