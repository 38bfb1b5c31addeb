#include <algorithm>

#include "runtimes/simulated/world/world.h"

namespace orv::simulated {

namespace {

// Maximum length of a notification in bytes with the usual ATT MTU of 247.
constexpr std::size_t EchoBlock = 244;

bool IsNotifying(const Registration& registration) REQUIRES(worldMutex) {
    return registration.source->IsNotifying();
}

}  // namespace

void World::Post(const Registration& registration,
                 const std::shared_ptr<const std::vector<BYTE>>& value) {
    auto work = [raise = registration.raise, value] { raise(*value); };
    clock.Post(std::make_unique<Task>(Lane::Notifications, std::move(work), registration.strand));
}

INT32 World::Notify(DeviceRecord& device, const std::vector<BYTE>& value, INT32 registration) {
    const auto& all = device.registrations;
    if (registration >= 0 && static_cast<std::size_t>(registration) >= all.size()) {
        return -1;
    }
    const auto shared = std::make_shared<const std::vector<BYTE>>(value);
    if (registration >= 0) {
        Post(all[static_cast<std::size_t>(registration)], shared);
        return 1;
    }
    for (const Registration& each : all) {
        Post(each, shared);
    }
    return static_cast<INT32>(all.size());
}

template <typename Chosen>
void World::NotifySome(DeviceRecord& device, const std::vector<BYTE>& value, Chosen chosen) {
    const auto shared = std::make_shared<const std::vector<BYTE>>(value);
    for (const Registration& each : device.registrations) {
        if (device.present && chosen(each)) {
            Post(each, shared);
        }
    }
}

void World::NotifyOpenLinks(DeviceRecord& device, const std::vector<BYTE>& value) {
    NotifySome(device, value, [](const Registration& each) { return each.source->IsOpen(); });
}

Duration World::Receive(const Device& device, const std::vector<BYTE>& block) {
    device->writes.push_back(block);
    Echo& echo = device->echo;
    const bool notifying =
        std::any_of(device->registrations.begin(), device->registrations.end(), IsNotifying);
    if (!echo.on || !notifying) {
        return Duration::zero();
    }
    const Duration now = clock.Now();
    Duration moment = std::max(now, echo.lastSent);
    for (std::size_t at = 0; at < block.size(); at += EchoBlock) {
        const std::size_t end = std::min(block.size(), at + EchoBlock);
        std::vector<BYTE> part(&block[at], &block[at] + (end - at));
        moment += echo.interval;
        clock.After(moment - now, [this, device, part = std::move(part)]() REQUIRES(worldMutex) {
            if (device->exists) {
                NotifySome(*device, part, IsNotifying);
            }
        });
    }
    echo.lastSent = moment;
    return echo.interval;
}

void World::AddRegistration(DeviceRecord& device, Registration registration) {
    if (!device.exists) {
        return;
    }
    device.registrations.push_back(std::move(registration));
    for (PendingEvent& event : device.pendingEvents) {
        clock.After(event.delay, std::move(event.action));
    }
    device.pendingEvents.clear();
}

}  // namespace orv::simulated
