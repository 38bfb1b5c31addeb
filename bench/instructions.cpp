// Runs each main path of the library under callgrind, which counts its instructions: they repeat
// exactly where times do not. tools/instructions starts this and compares with what is recorded.
//
// One dump per path, named after it, holds Calls calls.
#include <valgrind/callgrind.h>

#include <cstdio>

#include "bench/support/arrangement.h"
#include "link/receive.h"
#include "scanner/advertisement.h"

namespace orv::bench {

namespace {

constexpr int Calls = 100;
constexpr std::size_t Listed = 1000;

std::uint8_t buffer[4096];

// The first call looks up what is then kept, and so is not counted.
template <typename Prepare, typename Body>
void Count(const char* path, Prepare prepare, Body body) {
    prepare();
    body();
    prepare();
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    for (int i = 0; i < Calls; ++i) {
        body();
    }
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(path);
    std::printf("%s\n", path);
}

void CountLinks() {
    const auto empty = [] {
        ArrangeLinks(4);
        ArrangeQueue(0);
    };
    const auto filled = [] {
        ArrangeLinks(4);
        ArrangeQueue(Calls * 244);
    };
    const auto sender = SenderOf(1);
    const Reference<IGattValueChangedEventArgs> small(new Notification(20));
    const Reference<IGattValueChangedEventArgs> large(new Notification(244));

    Count("empty poll", empty, [] { OrvDevice_Receive(1, 244, buffer); });
    Count("receive of 244 bytes", filled, [] { OrvDevice_Receive(1, 244, buffer); });
    Count("notification of 20 bytes", empty, [&] { OnDataReceived(sender, small); });
    Count("notification of 244 bytes", empty, [&] { OnDataReceived(sender, large); });
    Count("send of 244 bytes", empty, [] { OrvDevice_Send(1, 244, buffer); });
}

void CountScanner() {
    const auto listed = [] { ArrangeListed(Listed); };
    const auto hear = [&](const char* path, UINT64 address, const char16_t* name, UINT64 step) {
        auto* const heard = new Heard(address, name);
        const Reference<IBluetoothLEAdvertisementReceivedEventArgs> arguments(heard);
        Count(path, listed, [&] {
            OnAdvertisementReceived(watcher, arguments);
            heard->address += step;
        });
    };
    hear("advertisement, listed", ListedAddress + Listed - 1, u"ORV-0042", 0);
    hear("advertisement, new", ListedAddress + Listed, u"ORV-0043", 1);
    hear("advertisement, foreign", 0x112233445566, u"Lamp", 0);

    Count("device count", listed, [] { OrvScanner_GetDeviceCount(0); });
    Count("device record", listed, [] {
        DiscoveredDevice info;
        OrvScanner_GetDeviceInfo(0, 500, &info);
    });
    Count("log line, log off", listed, [] { Logging_AppendLine("text", 4); });
}

}  // namespace

}  // namespace orv::bench

int main() {
    orv::bench::CountLinks();
    orv::bench::CountScanner();
}
