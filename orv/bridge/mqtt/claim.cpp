#include "orv/bridge/mqtt/claim.h"

#include <algorithm>

namespace orv::bridge {

namespace {

using namespace std::chrono_literals;

// If neither gateway has a link, a new claim beats the current one if its signal is at least this
// many dB stronger. The signal of a device at rest varies by a few dB.
constexpr int StrongerBy = 6;
// Time until a gateway repeats its claim. Two repetitions may be lost before the claim expires.
constexpr auto RepeatAfter = 10s;
// A gateway repeats a claim that the broker does not send back within this time. Even distant
// brokers need less.
constexpr auto AnswerWithin = 2s;
// Time for a gateway with a stronger signal to object to a claim.
constexpr auto Settles = 500ms;
// A gateway that cannot connect to a device does not claim it for this time.
constexpr auto Abstains = 30s;

// Returns a longer delay for a weaker signal, so that the gateway with the strongest signal claims
// first.
std::chrono::milliseconds BidDelay(int signal) {
    return std::clamp(-30 - signal, 0, 100) * 10ms;
}

bool Beats(const Claim& claim, const Claim& held) {
    if (claim.gateway == held.gateway) {
        return true;
    }
    if (claim.isOpen != held.isOpen) {
        return claim.isOpen;
    }
    // If a broker lost the claims, two gateways can have a link. The name that sorts first wins.
    return claim.isOpen ? claim.gateway < held.gateway : claim.signal >= held.signal + StrongerBy;
}

}  // namespace

void ClaimBook::Take(const Claim& claim, std::chrono::seconds left, Time now) {
    const auto held = Current(now);
    if (held && !Beats(claim, *held)) {
        // The broker now retains this weaker claim, so the holder of the device must repeat its
        // own.
        mustRepeat = held->gateway == own;
        return;
    }
    if (!held || held->gateway != claim.gateway) {
        heldSince = now;
    }
    current = claim;
    expires = now + std::min(left, Validity);
    bidAt.reset();
}

std::optional<Claim> ClaimBook::Current(Time now) const {
    return current && now < expires ? current : std::nullopt;
}

bool ClaimBook::IsOurs(Time now) const {
    const auto held = Current(now);
    return held && held->gateway == own && now >= heldSince + Settles;
}

ClaimBook::Action ClaimBook::Publish(Time now) {
    mustRepeat = false;
    published = now;
    return Action::Publish;
}

ClaimBook::Action ClaimBook::Next(const Situation& situation, Time now) {
    const auto held = Current(now);
    if (held && held->gateway == own) {
        if (situation.isFailing) {
            abstainsUntil = now + Abstains;
        }
        if ((!situation.isWanted || situation.isFailing) && !situation.isOpen) {
            current.reset();
            return Action::Remove;
        }
        const bool isDue = mustRepeat || held->isOpen != situation.isOpen ||
                           now >= expires - Validity + RepeatAfter;
        return isDue && now >= published + (mustRepeat ? 0s : AnswerWithin) ? Publish(now)
                                                                            : Action::None;
    }
    if (situation.isOpen && !held) {
        // Claims again: the claim expired while this gateway was offline.
        return now >= published + AnswerWithin ? Publish(now) : Action::None;
    }
    const bool canBid = situation.isWanted && situation.signal && now >= abstainsUntil &&
                        (!held || Beats({own, *situation.signal, false}, *held));
    if (!canBid) {
        bidAt.reset();
        return Action::None;
    }
    if (!bidAt) {
        bidAt = now + BidDelay(*situation.signal);
    }
    if (now < *bidAt || now < published + AnswerWithin) {
        return Action::None;
    }
    return Publish(now);
}

}  // namespace orv::bridge
