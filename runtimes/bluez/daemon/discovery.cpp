#include "runtimes/bluez/daemon/discovery.h"

#include "runtimes/objects/utf8.h"

namespace orv::bluez {

namespace {

constexpr const char* AdapterInterface = "org.bluez.Adapter1";
constexpr milliseconds PauseAfterFailure{500};
constexpr milliseconds CallLimit{2000};
constexpr std::size_t MostRemembered = 4096;

// HCI's value for an unknown signal strength, for reports without one.
constexpr INT16 NoSignal = 127;

// Requests a report of each advertisement, not only of a device's first one. The kernel may still
// omit some.
int AppendFilter(sd_bus_message* call) {
    return sd_bus_message_append(call, "a{sv}", 2, "Transport", "s", "le", "DuplicateData", "b", 1);
}

}  // namespace

void Discovery::Add(Watchers& added) {
    watchers.merge(added);
    connection.WhenKnown([this] { Step(); });
}

void Discovery::Remove(const std::shared_ptr<Watcher>& watcher) {
    watchers.erase(watcher);
    Step();
}

void Discovery::Hold() {
    ++holds;
    Step();
}

void Discovery::Release() {
    --holds;
    Step();
}

void Discovery::Remember(UINT64 address) {
    if (remembered.size() >= MostRemembered) {
        remembered.clear();  // limits the memory for devices that change their address often
    }
    remembered.insert(address);
}

// Reports an advertisement with the name and, if the daemon sent data, a scan response with the
// data. The daemon merges both packets and does not report which one contained a value.
void Discovery::Heard(const Device& device, bool withData) {
    if (!IsWanted()) {
        return;
    }
    Remember(device.address);
    if (watchers.empty()) {
        return;
    }
    const INT16 signal = device.signal.value_or(NoSignal);
    Send({device.address, signal, /*isScanResponse=*/false, {objects::FromUtf8(device.name), {}}});
    if (withData) {
        std::vector<Bytes> sections = device.manufacturerData;
        sections.insert(sections.end(), device.serviceData.begin(), device.serviceData.end());
        Send({device.address, signal, /*isScanResponse=*/true, {{}, std::move(sections)}});
    }
}

void Discovery::Send(objects::Packet packet) {
    const auto sent = std::make_shared<const objects::Packet>(std::move(packet));
    for (const auto& watcher : watchers) {
        watcher->Hear(sent);
    }
}

void Discovery::Step() {
    const auto& adapters = connection.tree.Adapters();
    for (Path* const adapter : {&scanning, &leftOn}) {
        const auto current = adapters.find(*adapter);
        if (!pending && (current == adapters.end() || !current->second.powered)) {
            adapter->clear();  // the adapter is off or gone, so its scan has ended
        }
    }
    if (pending || paused) {
        return;
    }
    if (!IsWanted()) {
        const Path adapter = scanning.empty() ? leftOn : scanning;
        if (!adapter.empty()) {
            Stop(adapter);
        }
    } else if (const Path* adapter = connection.tree.ScanningAdapter();
               adapter != nullptr && scanning.empty()) {
        StartOn(Path(*adapter));
    }
}

void Discovery::StartOn(const Path& adapter) {
    connection.bus.Call(adapter, AdapterInterface, "SetDiscoveryFilter", AppendFilter);
    connection.bus.Call(
        adapter, AdapterInterface, "StartDiscovery", nullptr,
        [this, adapter = adapter](const Failure& failure, sd_bus_message*) mutable {
            Started(adapter, failure);
        },
        CallLimit);
    pending = true;  // only after Call, which may throw
}

void Discovery::Started(Path& adapter, const Failure& failure) {
    pending = false;
    if (!failure) {
        scanning = std::move(adapter);  // cannot fail, unlike a copy
    } else {
        Pause();
        // The daemon may scan nevertheless: its reply to this start (NO_REPLY) or to an earlier one
        // (InProgress) was lost. It also reports InProgress if the kernel rejects the scan. A stop
        // makes the next start possible.
        if (failure.name == SD_BUS_ERROR_NO_REPLY || failure.name == "org.bluez.Error.InProgress") {
            Stop(adapter);
        }
    }
    Step();
}

void Discovery::Pause() {
    connection.loop.After(PauseAfterFailure, [this] {
        paused = false;
        Step();
    });
    paused = true;
}

void Discovery::Stop(const Path& adapter) {
    connection.bus.Call(
        adapter, AdapterInterface, "StopDiscovery", nullptr,
        [this, adapter = adapter, run = connection.Run()](const Failure& failure,
                                                          sd_bus_message*) mutable {
            pending = false;
            // Repeats the stop later: another stop may be in progress, or the reply was lost.
            // Only this process can end its scan.
            if (failure && failure.message != "No discovery started" && run == connection.Run()) {
                leftOn = std::move(adapter);
                Pause();
            }
            Step();
        },
        CallLimit);
    pending = true;
    scanning.clear();
    leftOn.clear();
}

void Discovery::Forget() {
    scanning.clear();
    leftOn.clear();
    paused = false;  // earlier failures no longer matter
}

}  // namespace orv::bluez
