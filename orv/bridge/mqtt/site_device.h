// A device as one gateway sees it: whether clients want a link, which gateway claims the device,
// and the link with its pending commands.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orv/bridge/link_pool.h"
#include "orv/bridge/mqtt/broker.h"
#include "orv/bridge/mqtt/claim.h"
#include "orv/bridge/mqtt/facts.h"
#include "orv/bridge/state_view.h"

namespace orv::bridge {

class SiteDevice {
  public:
    // The data that all devices of a gateway share.
    struct Site {
        LinkPool& links;
        Broker& broker;
        Topics topics;
        std::string gateway;
        std::int64_t run;  // identifies this run of the gateway
    };

    // Subscribes to the topics of this device only, because a site may have thousands of devices.
    SiteDevice(const Site& site, BluetoothAddress address, Time now);
    ~SiteDevice();
    SiteDevice(const SiteDevice&) = delete;
    SiteDevice& operator=(const SiteDevice&) = delete;

    // `levels` are the levels of the topic after the address. Returns why the message is rejected,
    // or an empty string.
    std::string Take(const std::vector<std::string>& levels, const Message& message, Time now);
    // Call this if `gateway` is or was offline. Forgets its claim to the device. If `gateway` is
    // this gateway, keeps the claim while the link is open.
    void NoticeAway(const std::string& gateway, Time now);

    // Publishes results and updates the claim. `signal` is in dBm, if heard recently. `canHold`
    // allows a new link. `canClaim` means that the broker is online and has sent the retained
    // claims.
    void Step(std::optional<int> signal, bool canHold, bool canClaim, Time now);
    // Closes the link; a later Step removes the claim.
    void GiveUp();

    bool HasLink() const { return link != nullptr; }
    bool IsForgettable() const { return !link && !isWanted && blocks == 0; }
    // Returns nothing if there is no link and none is wanted.
    std::optional<StateRow> Row(Time now) const;

  private:
    struct Command {
        std::string id;
        std::uint64_t bytes;
        std::uint64_t end;  // value of `queued` after this command
    };

    std::string TakeSend(const std::string& id, std::string_view bytes);
    std::string TakeClaim(const Message& message, Time now);
    void StepClaim(std::optional<int> signal, bool canHold, const LinkStatus& status, Time now);
    void Hold();
    void Release(Time now);
    void PublishBlocks();
    void PublishOutcomes(const LinkStatus& status);
    void PublishLink(const LinkStatus& status, Time now);

    const Site& site;
    const BluetoothAddress address;
    const std::string name;
    const std::string topic;  // topic prefix of the device
    const std::string own;    // prefix of this gateway's topics for the device
    ClaimBook claims;
    bool isWanted = false;
    Time claimsKnown;          // time by which the device's retained messages have arrived
    std::uint64_t blocks = 0;  // number of the last received block in this run
    std::deque<std::string> ids;

    std::shared_ptr<PersistentLink> link;  // null if this gateway does not hold the device
    std::uint64_t queued = 0;              // bytes of all commands since the link opened
    std::uint64_t lostSoFar = 0;           // lost bytes that were already reported
    std::deque<Command> commands;
    LinkStatus published;
    std::uint64_t publishedDropped = 0;
    Time publishedAt;
};

}  // namespace orv::bridge
