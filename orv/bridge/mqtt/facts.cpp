#include "orv/bridge/mqtt/facts.h"

#include <chrono>
#include <nlohmann/json.hpp>

#include "orv/address.h"
#include "orv/bridge/state_view.h"
#include "orv/scan/device_text.h"

namespace orv::bridge {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t LongestName = 64;
constexpr std::uint8_t Unset = 0xFF;
constexpr int WeakestSignal = -128;
constexpr int StrongestSignal = 127;

// Returns the JSON as ASCII text. Bytes that are not UTF-8 become U+FFFD.
std::string TextOf(const Json& fact) {
    return fact.dump(-1, ' ', true, Json::error_handler_t::replace);
}

Json ValueOf(std::uint8_t value) {
    return value == Unset ? Json(nullptr) : Json(value);
}

// Returns an empty object if the payload is not a JSON object. Deep nesting is safe, because the
// parser stores it on the heap.
Json Parse(std::string_view payload) {
    Json fact = Json::parse(payload, nullptr, /*allow_exceptions=*/false);
    return fact.is_object() ? fact : Json::object();
}

}  // namespace

std::int64_t UnixTime() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::string StatusFact(bool isOnline, std::int64_t run, std::uint64_t refused) {
    return TextOf({{"state", isOnline ? "online" : "offline"}, {"run", run}, {"refused", refused}});
}

std::string HeardFact(const DiscoveredDevice& device) {
    return TextOf({{"name", NameOf(device)},
                   {"rssi", device.rssi},
                   {"value0500", ValueOf(device.value0500)},
                   {"value1130", ValueOf(device.value1130)},
                   {"data1118", DataText(device)},
                   {"time", UnixTime()}});
}

std::string LinkFact(const LinkStatus& status, std::int64_t run, std::uint64_t blocks,
                     const Dropped& dropped) {
    return TextOf({{"state", StateText(status.state)},
                   {"reason", status.reason},
                   {"run", run},
                   {"received", {{"blocks", blocks}, {"bytes", status.received}}},
                   {"sent", status.sent},
                   {"unconfirmed", status.unconfirmed},
                   {"unsent", status.unsent},
                   {"unread", status.unread},
                   {"losses", status.losses},
                   {"dropped",
                    {{"blocks", dropped.blocks},
                     {"bytes", dropped.bytes},
                     {"first", dropped.first},
                     {"last", dropped.last}}}});
}

std::string SentFact(const std::string& id, std::uint64_t bytes, std::uint64_t lost) {
    return TextOf({{"id", id}, {"bytes", bytes}, {"lost", lost}});
}

std::string ClaimFact(const Claim& claim) {
    return TextOf({{"gateway", claim.gateway}, {"signal", claim.signal}, {"open", claim.isOpen}});
}

std::optional<Claim> ParseClaim(std::string_view payload) {
    const Json fact = Parse(payload);
    const Json gateway = fact.value("gateway", Json());
    const Json signal = fact.value("signal", Json());
    const Json isOpen = fact.value("open", Json());
    if (!gateway.is_string() || !IsName(gateway.get<std::string>()) ||
        !signal.is_number_integer() || signal < WeakestSignal || signal > StrongestSignal ||
        !isOpen.is_boolean()) {
        return std::nullopt;
    }
    return Claim{gateway, signal, isOpen};
}

bool IsOffline(std::string_view payload) {
    return Parse(payload).value("state", Json()) == "offline";
}

bool IsName(std::string_view text) {
    return !text.empty() && text.size() <= LongestName &&
           text.find_first_not_of(
               "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
               "0123456789-_") == std::string_view::npos;
}

}  // namespace orv::bridge
