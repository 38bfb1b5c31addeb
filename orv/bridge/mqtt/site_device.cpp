#include "orv/bridge/mqtt/site_device.h"

#include <algorithm>

#include "orv/address.h"
#include "orv/terminal/printable.h"

namespace orv::bridge {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t LargestBlock = 4096;
constexpr std::size_t RememberedIds = 256;
constexpr auto CountsEvery = 5s;
// A gateway removes its claim to a device after this many failed connects and lost links in a row.
constexpr std::uint64_t FailingAfter = 3;

}  // namespace

SiteDevice::SiteDevice(const Site& deviceSite, BluetoothAddress deviceAddress, Time now)
    : site(deviceSite),
      address(deviceAddress),
      name(AddressText(address)),
      topic(site.topics.site + "device/" + name + '/'),
      own(site.topics.gateway + "device/" + name + '/'),
      claims(site.gateway),
      claimsKnown(now + ClaimBook::RetainedArrive) {
    site.broker.Subscribe(topic + '+');
}

SiteDevice::~SiteDevice() {
    site.broker.Unsubscribe(topic + '+');
}

std::string SiteDevice::Take(const std::vector<std::string>& levels, const Message& message,
                             Time now) {
    const std::string& verb = levels.front();
    if (message.wasRetained && (verb == "send" || verb == "disconnect")) {
        // Each gateway would execute a retained command again whenever it subscribes.
        return "a retained " + verb;
    }
    if (verb == "send") {
        const std::string id = levels.size() == 2 ? levels.back() : std::string();
        return IsName(id) ? TakeSend(id, message.payload)
                          : "a send without an id of letters, digits, - and _";
    }
    if (verb == "claim") {
        return TakeClaim(message, now);
    }
    if (verb == "connect") {
        // An empty payload only removes the retained message.
        isWanted = isWanted || !message.payload.empty();
    } else if (verb == "disconnect") {
        isWanted = false;
        site.broker.Retain({topic + "connect", ""});
    } else {
        return "the command " + verb;
    }
    return "";
}

// Ignores a repeated id, because a broker may deliver a message twice.
std::string SiteDevice::TakeSend(const std::string& id, std::string_view bytes) {
    if (!link || std::find(ids.begin(), ids.end(), id) != ids.end()) {
        return "";
    }
    if (bytes.size() > link->Room() || commands.size() >= RememberedIds) {
        return "a send to " + name + ": its queue is full";
    }
    ids.push_back(id);
    if (ids.size() > RememberedIds) {
        ids.pop_front();
    }
    queued += bytes.size();
    commands.push_back({id, bytes.size(), queued});
    link->Send(bytes);
    return "";
}

std::string SiteDevice::TakeClaim(const Message& message, Time now) {
    if (message.payload.empty()) {
        claims.Clear();
        return "";
    }
    const auto claim = ParseClaim(message.payload);
    if (!claim) {
        return "a claim that is not valid";
    }
    claims.Take(*claim, std::chrono::seconds(message.expirySeconds.value_or(UINT32_MAX)), now);
    return "";
}

void SiteDevice::NoticeAway(const std::string& gateway, Time now) {
    const bool isOpen = link && link->Status().state == LinkState::Open;
    const auto holder = claims.Current(now);
    if (holder && holder->gateway == gateway && !(isOpen && gateway == site.gateway)) {
        claims.Clear();
    }
}

void SiteDevice::GiveUp() {
    isWanted = false;
    if (link) {
        link->SetWanted(false);  // Step does this only while the broker is online
    }
}

void SiteDevice::Step(std::optional<int> signal, bool canHold, bool canClaim, Time now) {
    LinkStatus status;
    if (link) {
        PublishBlocks();
        status = link->Status();
        PublishOutcomes(status);
        PublishLink(status, now);
    }
    // While the broker cannot be reached, an open link stays open: a device accepts only one link,
    // so no other gateway can connect to it.
    if (canClaim && now >= claimsKnown) {
        StepClaim(signal, canHold, status, now);
        if (!link && canHold && isWanted && claims.IsOurs(now)) {
            Hold();
        }
    }
    if (link && status.state == LinkState::Closed && (!isWanted || !claims.IsOurs(now))) {
        Release(now);
    }
}

void SiteDevice::StepClaim(std::optional<int> signal, bool canHold, const LinkStatus& status,
                           Time now) {
    const bool isOpen = status.state == LinkState::Open || status.state == LinkState::Closing;
    const bool isFailing = status.failures >= FailingAfter;
    // Claims only if a link is possible, because a claim keeps other gateways from connecting.
    const bool canUse = isWanted && (link || canHold);
    switch (claims.Next({canUse, signal, isOpen, isFailing}, now)) {
        case ClaimBook::Action::Publish:
            site.broker.Retain({topic + "claim",
                                ClaimFact({site.gateway, signal.value_or(-127), isOpen}),
                                static_cast<std::uint32_t>(ClaimBook::Validity.count())});
            break;
        case ClaimBook::Action::Remove:
            site.broker.Retain({topic + "claim", ""});
            break;
        case ClaimBook::Action::None:
            break;
    }
    if (link) {
        const auto holder = claims.Current(now);
        const bool isForeign = holder && holder->gateway != site.gateway;
        link->SetWanted(isWanted && !isForeign && (isOpen || claims.IsOurs(now)));
    }
}

void SiteDevice::Hold() {
    link = site.links.Add(address);
    queued = lostSoFar = 0;
    published = {};
    site.broker.Subscribe(topic + "send/+");
}

// Call this only in the state Closed, in which all received bytes are queued and link.reset() does
// not block.
void SiteDevice::Release(Time now) {
    PublishBlocks();
    PublishOutcomes(link->Status());
    PublishLink(link->Status(), now);
    link.reset();
    commands.clear();
    site.broker.Unsubscribe(topic + "send/+");
}

void SiteDevice::PublishBlocks() {
    for (std::string bytes; !(bytes = link->Take(LargestBlock)).empty();) {
        ++blocks;
        site.broker.Queue(
            address, blocks,
            {own + "received/" + std::to_string(site.run) + '/' + std::to_string(blocks),
             std::move(bytes)});
    }
}

// If a write with parts of two commands fails, the first command reports the loss.
void SiteDevice::PublishOutcomes(const LinkStatus& status) {
    const std::uint64_t lost = status.unconfirmed + status.unsent;
    while (!commands.empty() && status.sent + lost >= commands.front().end) {
        const Command& done = commands.front();
        site.broker.Send({own + "sent", SentFact(done.id, done.bytes, lost - lostSoFar)});
        lostSoFar = lost;
        commands.pop_front();
    }
}

void SiteDevice::PublishLink(const LinkStatus& status, Time now) {
    const Dropped& dropped = site.broker.DroppedOf(address);
    const bool hasChanged = status.state != published.state || status.reason != published.reason ||
                            status.losses != published.losses || dropped.blocks != publishedDropped;
    const bool hasCounted = status.sent != published.sent ||
                            status.received != published.received ||
                            status.Lost() != published.Lost();
    if (hasChanged || (hasCounted && now - publishedAt >= CountsEvery)) {
        published = status;
        publishedDropped = dropped.blocks;
        publishedAt = now;
        site.broker.Retain({own + "link", LinkFact(status, site.run, blocks, dropped)});
    }
}

std::optional<StateRow> SiteDevice::Row(Time now) const {
    if (!link && !isWanted) {
        return std::nullopt;
    }
    const auto holder = claims.Current(now);
    const std::uint64_t dropped = site.broker.DroppedOf(address).blocks;
    return StateRow{name, topic.substr(0, topic.size() - 1), holder ? holder->gateway : "",
                    link ? link->Status() : LinkStatus{},
                    dropped == 0 ? "" : Counted(dropped, "block") + " dropped"};
}

}  // namespace orv::bridge
