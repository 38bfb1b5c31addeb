// Decides which gateway of a site holds (may connect to) a device. All gateways decide the same,
// because they receive the claims in the same order.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace orv::bridge {

using Time = std::chrono::steady_clock::time_point;

struct Claim {
    std::string gateway;
    int signal = 0;       // dBm
    bool isOpen = false;  // the gateway has an open link to the device
};

// Evaluates the claims to one device. The caller passes the time, so that tests need not wait.
class ClaimBook {
  public:
    explicit ClaimBook(std::string gateway) : own(std::move(gateway)) {}

    // Processes a received claim of any gateway, including this one. It is valid for `left`.
    void Take(const Claim& claim, std::chrono::seconds left, Time now);
    // Call this if the current claim was removed or its gateway is offline.
    void Clear() { current.reset(); }

    // Returns the claim of the gateway that holds the device, if any.
    std::optional<Claim> Current(Time now) const;
    // Returns true if this gateway holds the device and other gateways had time to object.
    bool IsOurs(Time now) const;

    enum class Action { None, Publish, Remove };
    struct Situation {
        bool isWanted;              // a link is requested and possible
        std::optional<int> signal;  // in dBm, if received recently
        bool isOpen;                // this gateway has an open link
        bool isFailing;             // several connects or links failed in a row
    };
    // Returns what to do with the claim that the broker retains. A published claim comes back from
    // the broker; pass it to Take.
    Action Next(const Situation& situation, Time now);

    static constexpr std::chrono::seconds Validity{30};
    // Time for the retained claims to arrive after a subscription.
    static constexpr std::chrono::seconds RetainedArrive{1};

  private:
    Action Publish(Time now);

    std::string own;
    std::optional<Claim> current;
    Time expires;
    Time heldSince;
    Time published;             // time of this gateway's last claim
    std::optional<Time> bidAt;  // time of the next claim if the device stays free
    Time abstainsUntil;
    bool mustRepeat = false;
};

}  // namespace orv::bridge
