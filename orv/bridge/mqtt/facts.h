// The topics of a site and its JSON messages (facts), which docs/bridge.schema.json describes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "orv/bridge/mqtt/broker.h"
#include "orv/bridge/mqtt/claim.h"
#include "orv/bridge/persistent_link.h"

namespace orv::bridge {

struct Topics {
    Topics(const std::string& siteName, const std::string& gatewayName)
        : site("orv/" + siteName + '/'), gateway(site + "gateway/" + gatewayName + '/') {}

    std::string site;     // orv/SITE/
    std::string gateway;  // orv/SITE/gateway/NAME/
};

// Returns this machine's time in milliseconds since 1970.
std::int64_t UnixTime();

std::string StatusFact(bool isOnline, std::int64_t run, std::uint64_t refused);
std::string HeardFact(const DiscoveredDevice& device);
std::string LinkFact(const LinkStatus& status, std::int64_t run, std::uint64_t blocks,
                     const Dropped& dropped);
std::string SentFact(const std::string& id, std::uint64_t bytes, std::uint64_t lost);
std::string ClaimFact(const Claim& claim);

// Returns nothing if the payload is not a valid claim. Payloads from a broker are not trusted.
std::optional<Claim> ParseClaim(std::string_view payload);
// Returns true if the payload is the status of an offline gateway.
bool IsOffline(std::string_view payload);

// Returns whether `text` can be a topic level: 1 to 64 letters, digits, - and _.
bool IsName(std::string_view text);

}  // namespace orv::bridge
