#include "orv/bridge/mqtt/gateway.h"

#include <algorithm>
#include <sstream>

#include "orv/address.h"
#include "orv/bridge/mqtt/facts.h"

namespace orv::bridge {

namespace {

using namespace std::chrono_literals;

constexpr std::ptrdiff_t MostLinks = 64;
constexpr auto RefusalsEvery = 5s;

std::vector<std::string> LevelsBehind(const std::string& prefix, const std::string& topic) {
    std::vector<std::string> levels;
    std::istringstream rest(
        topic.compare(0, prefix.size(), prefix) == 0 ? topic.substr(prefix.size()) : std::string());
    for (std::string level; std::getline(rest, level, '/');) {
        levels.push_back(level);
    }
    return levels;
}

}  // namespace

Gateway::Gateway(Library& library, const SiteDevice::Site& gatewaySite, std::string brokerPlace)
    : site(gatewaySite),
      place(std::move(brokerPlace)),
      heard(library, site.broker, site.topics.gateway + "heard/") {
    site.broker.Subscribe(site.topics.site + "gateway/+/status");
    PublishStatus({});
}

Message Gateway::Status(const Topics& topics, bool isOnline, std::int64_t run,
                        std::uint64_t refused) {
    return {topics.gateway + "status", StatusFact(isOnline, run, refused)};
}

void Gateway::Step() {
    const Time now = std::chrono::steady_clock::now();
    for (const Message& message : site.broker.Step()) {
        if (const std::string why = Take(message, now); !why.empty()) {
            ++refused;
            note = "refused " + why;
        }
    }
    const Broker::State& broker = site.broker.Status();
    if (std::exchange(connection, broker.connections) != broker.connections) {
        claimsKnown = now + ClaimBook::RetainedArrive;
        // The other gateways received the last will and regard this gateway as offline.
        for (auto& [address, device] : devices) {
            device.NoticeAway(site.gateway, now);
        }
    }
    if (heard.Step(now)) {
        MeetDevices(now);
    }
    StepDevices(broker.isOnline && now >= claimsKnown, now);
    if (now - statusPublished >= RefusalsEvery) {
        PublishStatus(now);
    }
}

void Gateway::PublishStatus(Time now) {
    const Message message =
        Status(site.topics, !isEnding, site.run, refused + site.broker.Status().refused);
    statusPublished = now;
    if (std::exchange(status, message.payload) != message.payload) {
        site.broker.Retain(message);
    }
}

std::string Gateway::Take(const Message& message, Time now) {
    auto levels = LevelsBehind(site.topics.site, message.topic);
    if (levels.size() == 3 && levels[0] == "gateway" && levels[2] == "status") {
        TakeStatus(levels[1], message, now);
        return "";
    }
    const auto address =
        levels.size() >= 3 && levels[0] == "device" ? FindAddress(levels[1]) : std::nullopt;
    if (!address || AddressText(*address) != levels[1]) {
        return "a topic that names no device";
    }
    const auto device = devices.find(*address);
    levels.erase(levels.begin(), levels.begin() + 2);
    // This gateway may have removed the device since the broker sent the message.
    return device == devices.end() ? "" : device->second.Take(levels, message, now);
}

void Gateway::TakeStatus(const std::string& gateway, const Message& message, Time now) {
    if (gateway == site.gateway) {
        // Repeats the status, because an old last will or another program may have replaced it.
        if (message.payload != status) {
            status.clear();
            PublishStatus(now);
        }
    } else if (IsOffline(message.payload)) {
        for (auto& [address, device] : devices) {
            device.NoticeAway(gateway, now);
        }
    }
}

void Gateway::MeetDevices(Time now) {
    for (const BluetoothAddress address : heard.Addresses()) {
        if (devices.size() < HeardDevices::Most) {
            devices.try_emplace(address, site, address, now);
        }
    }
    std::erase_if(devices, [&](const auto& entry) {
        return entry.second.IsForgettable() && !heard.SignalOf(entry.first);
    });
}

void Gateway::StepDevices(bool canClaim, Time now) {
    auto links = std::count_if(devices.begin(), devices.end(),
                               [](const auto& entry) { return entry.second.HasLink(); });
    for (auto& [address, device] : devices) {
        if (isEnding) {
            device.GiveUp();
        }
        const bool hadLink = device.HasLink();
        device.Step(heard.SignalOf(address), links < MostLinks, canClaim, now);
        links += device.HasLink() - hadLink;
    }
}

bool Gateway::End() {
    if (!std::exchange(isEnding, true)) {
        heard.Stop();
        PublishStatus(std::chrono::steady_clock::now());
    }
    Step();
    return std::none_of(devices.begin(), devices.end(),
                        [](const auto& entry) { return entry.second.HasLink(); }) &&
           (site.broker.IsEmpty() || !site.broker.Status().isOnline);
}

std::vector<StateRow> Gateway::Rows() const {
    const Broker::State& broker = site.broker.Status();
    const std::string& refusal = site.broker.Refusal();
    StateRow first{site.gateway, place, "", {}, note.empty() ? refusal : note};
    first.status.state = broker.isOnline ? LinkState::Open : LinkState::Waiting;
    first.status.reason = broker.reason;
    std::vector<StateRow> rows{first};
    for (const auto& [address, device] : devices) {
        if (auto row = device.Row(std::chrono::steady_clock::now())) {
            rows.push_back(std::move(*row));
        }
    }
    return rows;
}

}  // namespace orv::bridge
