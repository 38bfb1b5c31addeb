// Runs the main code paths of the library under callgrind, which counts their instructions. Unlike
// times, the counts are the same in every run. tools/instructions starts this program and compares
// the counts with recorded ones.
//
// Writes one dump per code path, with its name and the instructions of `Calls` calls.
#include <valgrind/callgrind.h>

#include <cstdio>

#include "bench/support/addresses.h"
#include "bench/support/arrangement.h"
#include "link/receive.h"
#include "scanner/advertisement_handler.h"

namespace orv::bench {

namespace {

constexpr int Calls = 100;

std::uint8_t buffer[4096];

// Counts the instructions of `body`, but not of its first call, which fills caches for later calls.
template <typename Prepare, typename Body>
void Count(const char* path, Prepare prepare, Body body) {
    prepare();
    body();
    prepare();
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    for (int i = 0; i < Calls; ++i) {
        body();
    }
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(path);
    CALLGRIND_STOP_INSTRUMENTATION;  // otherwise, the next prepare() would be slow
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
    Count("log line, log off", empty, [] { Logging_AppendLine("text", 4); });
}

void CountAdvertisements(AddressKind kind, std::size_t listed) {
    auto* const heard = new Heard(0, LocalNameOf(kind));
    const Reference<IBluetoothLEAdvertisementReceivedEventArgs> arguments(heard);
    Addresses addresses(kind, listed);
    addresses.Restart(listed);
    const std::string path =
        "advertisement, " + std::string(NameOf(kind)) + ", " + std::to_string(listed) + " listed";
    Count(
        path.c_str(), [=] { ArrangeListed(listed); },
        [&] {
            heard->address = addresses.Next();
            OnAdvertisementReceived(watcher, arguments);
        });
}

void CountScanner(std::size_t listed) {
    for (const AddressKind kind :
         {AddressKind::Listed, AddressKind::New, AddressKind::OtherFamily}) {
        CountAdvertisements(kind, listed);
    }
    const auto arranged = [=] { ArrangeListed(listed); };
    const std::string count = "device count, " + std::to_string(listed) + " listed";
    Count(count.c_str(), arranged, [] { OrvScanner_GetDeviceCount(0); });
    const std::string record = "device record, " + std::to_string(listed) + " listed";
    Addresses addresses(AddressKind::Listed, listed);
    Count(record.c_str(), arranged, [&] {
        DiscoveredDevice info;
        OrvScanner_GetDeviceInfo(0, static_cast<std::int32_t>(addresses.Next() - ListedAddress),
                                 &info);
    });
}

}  // namespace

}  // namespace orv::bench

int main() {
    CALLGRIND_STOP_INSTRUMENTATION;
    orv::bench::CountLinks();
    // Counts with a short and a long list, because the count must not depend on the length.
    orv::bench::CountScanner(10);
    orv::bench::CountScanner(1000000);
}
