// Tests in simulated time how the gateways of a site claim a device. The broker delays claims,
// delivers them to all gateways in the same order, and keeps them for offline gateways.
#include "orv/bridge/mqtt/claim.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <random>
#include <vector>

namespace orv::bridge {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

struct Gateway {
    std::string name;
    int signal;
    milliseconds up{20};  // delay of messages to the broker
    milliseconds down{20};
    bool canConnect = true;
    bool isAlive = true;
    bool isOnline = true;
    bool isOpen = false;
    ClaimBook book{name};
    Time linkSince{};  // time at which the gateway's claim allowed it to connect
    std::deque<std::pair<Time, std::optional<Claim>>> inbox{};
};

// A device that accepts one link at a time, and the gateways that want to connect to it.
class Site {
  public:
    explicit Site(std::vector<Gateway> all) : gateways(std::move(all)) {}

    // Advances the time in steps. Fails if more than `mostHolding` gateways hold a valid claim at a
    // time.
    void Pass(milliseconds time) {
        for (const Time end = now + time; now < end; now += 10ms) {
            Distribute();
            for (Gateway& gateway : gateways) {
                Step(gateway);
            }
            int holding = 0;
            for (const Gateway& gateway : gateways) {
                holding += gateway.isAlive && gateway.isOnline && gateway.book.IsOurs(now);
            }
            ASSERT_LE(holding, mostHolding);
        }
    }

    std::string Open() const {
        std::string open;
        for (const Gateway& gateway : gateways) {
            open += gateway.isAlive && gateway.isOpen ? gateway.name : "";
        }
        return open;
    }

    std::vector<Gateway> gateways;
    void Send(const Gateway& sender, const std::optional<Claim>& claim) {
        ++published;
        sent.emplace(now + sender.up, claim);
    }

    bool isWanted = true;
    std::optional<Claim> retained;
    int mostHolding = 1;
    int published = 0;

  private:
    void Step(Gateway& gateway) {
        if (!gateway.isAlive) {
            return;
        }
        while (gateway.isOnline && !gateway.inbox.empty() && gateway.inbox.front().first <= now) {
            if (const auto claim = gateway.inbox.front().second) {
                gateway.book.Take(*claim, ClaimBook::Validity, now);
            } else {
                gateway.book.Clear();
            }
            gateway.inbox.pop_front();
        }
        if (!gateway.isOnline) {
            return;
        }
        const bool isFailing =
            !gateway.isOpen && gateway.linkSince != Time() && now - gateway.linkSince > 7s;
        const ClaimBook::Situation situation{isWanted, gateway.signal, gateway.isOpen, isFailing};
        switch (gateway.book.Next(situation, now)) {
            case ClaimBook::Action::Publish:
                Send(gateway, Claim{gateway.name, gateway.signal, gateway.isOpen});
                break;
            case ClaimBook::Action::Remove:
                Send(gateway, std::nullopt);
                break;
            case ClaimBook::Action::None:
                break;
        }
        const auto holder = gateway.book.Current(now);
        const bool isOurs = gateway.book.IsOurs(now);
        gateway.isOpen = gateway.isOpen && isWanted && (!holder || holder->gateway == gateway.name);
        gateway.linkSince = !isOurs                       ? Time()
                            : gateway.linkSince == Time() ? now
                                                          : gateway.linkSince;
        if (isOurs && isWanted && gateway.canConnect && Open().empty() &&
            now - gateway.linkSince > 300ms) {
            gateway.isOpen = true;
        }
    }

    void Distribute() {
        for (; !sent.empty() && sent.begin()->first <= now; sent.erase(sent.begin())) {
            retained = sent.begin()->second;
            for (Gateway& gateway : gateways) {
                gateway.inbox.emplace_back(now + gateway.down, retained);
            }
        }
    }

    Time now{1h};
    std::multimap<Time, std::optional<Claim>> sent;
};

TEST(Claims, TheStrongerSignalTakesTheDeviceAndKeepsIt) {
    Site site({{"far", -80}, {"near", -50}});
    site.Pass(5s);
    EXPECT_EQ(site.Open(), "near");
    site.gateways[0].signal = -20;
    site.Pass(120s);
    EXPECT_EQ(site.Open(), "near") << "an open link was taken";
    EXPECT_LE(site.published, 20);
    site.Send(site.gateways[0], Claim{"late", -20});
    site.Pass(1s);
    EXPECT_EQ(site.retained->gateway, "near") << "whoever asks the broker is misled";
    site.isWanted = false;
    site.Pass(1s);
    EXPECT_FALSE(site.gateways[0].book.Current(Time(1h + 127s))) << "the claim was not removed";
}

TEST(Claims, ExpireWhenTheirGatewayIsSilent) {
    Site site({{"far", -80}, {"near", -50}});
    site.Pass(15s);
    site.gateways[1].isAlive = false;
    site.Pass(15s);
    EXPECT_EQ(site.Open(), "") << "taken before the claim has expired";
    site.Pass(20s);
    EXPECT_EQ(site.Open(), "far");
}

TEST(Claims, AGatewayThatCannotConnectLeavesTheDeviceToOthers) {
    Site site({{"far", -80}, {"near", -50}});
    site.gateways[1].canConnect = false;
    site.Pass(20s);
    EXPECT_EQ(site.Open(), "far");
}

TEST(Claims, AnOpenLinkOutlivesTheAbsenceOfTheBroker) {
    Site site({{"far", -80}, {"near", -50}});
    site.Pass(5s);
    site.gateways[1].isOnline = false;
    site.Pass(60s);
    site.gateways[1].isOnline = true;
    site.Pass(10s);
    EXPECT_EQ(site.Open(), "near");
    EXPECT_TRUE(site.gateways[1].book.IsOurs(Time(1h + 75s)));
}

TEST(Claims, OfTwoOpenLinksOneGivesWay) {
    Site site({{"a", -80}, {"b", -50}});
    site.mostHolding = 2;
    for (Gateway& gateway : site.gateways) {
        gateway.isOpen = true;
        gateway.book.Take({gateway.name, gateway.signal, true}, ClaimBook::Validity, Time(1h));
    }
    site.Pass(15s);
    EXPECT_EQ(site.Open(), "a");
    EXPECT_LE(site.published, 6) << "they fight";
}

TEST(Claims, NeverTwoGatewaysHoldADeviceOverASlowNetwork) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        std::minstd_rand random(seed);
        const auto below = [&](int limit) { return static_cast<int>(random() >> 8) % limit; };
        std::vector<Gateway> gateways;
        for (int i = 0; i <= 1 + below(5); ++i) {
            gateways.push_back({std::string(1, static_cast<char>('a' + i)), -30 - below(70)});
            gateways.back().up = milliseconds(below(200));
            gateways.back().down = milliseconds(below(200));
        }
        Site site(std::move(gateways));
        site.Pass(8s);
        EXPECT_EQ(site.Open().size(), 1U);
    }
}

}  // namespace
}  // namespace orv::bridge
