#include "runtimes/bluez/daemon/notifications.h"

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace orv::bluez {

namespace {

constexpr const char* CharacteristicInterface = "org.bluez.GattCharacteristic1";

// A socket that closes within this time without receiving a value does not work for the device.
constexpr milliseconds AtOnce{1000};

// After this number of sockets that closed at once, D-Bus signals report the device's values.
constexpr int SocketEndsBeforeSignals = 2;

// When the daemon ends, its sockets close first; the bus reports the end within this time.
constexpr milliseconds RestartIsKnown{200};

int AppendNoOptions(sd_bus_message* call) {
    return sd_bus_message_append(call, "a{sv}", 0);
}

// Returns a copy of the descriptor in the reply, or -1. The reply closes the original.
int SocketIn(sd_bus_message* reply) {
    int socket = -1;
    UINT16 mtu = 0;
    if (sd_bus_message_read(reply, "hq", &socket, &mtu) < 0) {
        return -1;
    }
    return fcntl(socket, F_DUPFD_CLOEXEC, 0);
}

}  // namespace

Notifications::Notifications(Connection& connectionOfNotifications)
    : connection(connectionOfNotifications), pump([this](const SharedSource& source) {
          connection.loop.Post([this, source] { Ended(source); });
      }) {}

void Notifications::Subscribe(const Path& characteristic, UINT64 address,
                              SharedSubscriber subscriber, Done done) {
    const Characteristic* const known = connection.tree.FindCharacteristic(characteristic);
    if (known == nullptr) {
        done(false);
        return;
    }
    auto place = entries.find(characteristic);
    if (place == entries.end()) {
        // First creates the source: if that fails, no entry without a source may remain.
        auto source = std::make_shared<Source>(characteristic, address);
        place = entries.try_emplace(characteristic).first;
        place->second.source = std::move(source);
    }
    Entry& entry = place->second;
    entry.source->Subscribe(std::move(subscriber));
    if (entry.mode == Mode::Socket || entry.mode == Mode::Signals) {
        done(true);
        return;
    }
    entry.waiting.push_back(std::move(done));
    if (entry.mode == Mode::Starting) {
        return;
    }
    // The daemon offers sockets only for notifications, not for indications.
    if (known->Has("notify") && endedAtOnce[address] < SocketEndsBeforeSignals) {
        Acquire(entry);
    } else {
        StartSignals(entry);
    }
}

// Requests a socket that receives each value as one record. Values that the device sends before the
// daemon's reply are lost.
void Notifications::Acquire(Entry& entry) {
    connection.bus.Call(
        entry.source->path, CharacteristicInterface, "AcquireNotify", AppendNoOptions,
        [this, source = entry.source](const Failure& failure, sd_bus_message* reply) {
            Acquired(source, failure ? -1 : SocketIn(reply));
        });
    entry.mode = Mode::Starting;  // only after Call, which may throw
}

void Notifications::Acquired(const SharedSource& source, int socket) {
    const auto place = Find(source);
    if (place == entries.end()) {
        close(socket);  // all subscribers have unsubscribed meanwhile
        return;
    }
    Entry& entry = place->second;
    entry.mode = Mode::Idle;
    if (socket < 0) {
        StartSignals(entry);
    } else {
        source->Attach(socket);
        pump.Watch(source);
        Started(entry, Mode::Socket);
    }
}

// Requests a D-Bus signal for each value. This is the fallback, because signals are slower and a
// slow client was seen to lose values.
void Notifications::StartSignals(Entry& entry) {
    connection.bus.Call(entry.source->path, CharacteristicInterface, "StartNotify", nullptr,
                        [this, source = entry.source](const Failure& failure, sd_bus_message*) {
                            const auto place = Find(source);
                            if (place != entries.end()) {
                                failure ? Remove(place) : Started(place->second, Mode::Signals);
                            } else if (!failure) {
                                connection.bus.Call(source->path, CharacteristicInterface,
                                                    "StopNotify");
                            }
                        });
    entry.mode = Mode::Starting;
}

void Notifications::Started(Entry& entry, Mode mode) {
    entry.mode = mode;
    entry.since = Clock::now();
    for (const Done& done : std::exchange(entry.waiting, {})) {
        connection.loop.Attempt([&] { done(true); });
    }
}

// The daemon has closed the socket: the link has ended, or sockets do not work for this device.
void Notifications::Ended(const SharedSource& source) {
    const auto place = Find(source);
    if (place == entries.end() || place->second.mode != Mode::Socket) {
        return;  // the pump may report a closed socket twice
    }
    Entry& entry = place->second;
    const bool hasLink = connection.tree.FindCharacteristic(source->path) != nullptr;
    const bool atOnce = !source->HasTakenAny() && Clock::now() - entry.since < AtOnce;
    if (atOnce) {
        CountEnd(source->address, hasLink);
    }
    if (atOnce && hasLink) {
        StartSignals(entry);  // if memory is exhausted, the pump reports the end again
        pump.Unwatch(source);
        source->Detach();
    } else {
        Remove(place);
    }
}

// With some devices, every socket closes immediately. If the link ends too, the cause may be a weak
// signal, so the library avoids sockets only after the second time.
void Notifications::CountEnd(UINT64 address, bool hasLink) {
    connection.loop.After(RestartIsKnown, [=, run = connection.Run()] {
        if (run == connection.Run()) {
            endedAtOnce[address] += hasLink ? SocketEndsBeforeSignals : 1;
        }
    });
}

void Notifications::Unsubscribe(const Path& characteristic, const Subscriber& subscriber) {
    const auto place = entries.find(characteristic);
    if (place != entries.end() && place->second.source->Unsubscribe(&subscriber)) {
        LetGo(place);
    }
}

void Notifications::LetGo(Entries::iterator place) {
    if (place->second.mode == Mode::Signals) {
        connection.bus.Call(place->first, CharacteristicInterface, "StopNotify");
    }
    Remove(place);
}

// Closes the socket, which ends the notifications at the daemon.
void Notifications::Remove(Entries::iterator place) {
    const SharedSource source = place->second.source;
    const std::vector<Done> waiting = std::move(place->second.waiting);
    entries.erase(place);
    pump.Unwatch(source);
    source->Detach();
    for (const Done& done : waiting) {
        connection.loop.Attempt([&] { done(false); });
    }
}

Notifications::Entries::iterator Notifications::Find(const SharedSource& source) {
    const auto place = entries.find(source->path);
    return place != entries.end() && place->second.source == source ? place : entries.end();
}

void Notifications::Value(const Path& characteristic, const Bytes& value) {
    const auto place = entries.find(characteristic);
    if (place != entries.end() && place->second.mode == Mode::Signals) {
        pump.Offer(place->second.source, value);
    }
}

void Notifications::Step() {
    for (auto place = entries.begin(); place != entries.end();) {
        const auto current = place++;
        const Mode mode = current->second.mode;
        const bool exists = connection.tree.FindCharacteristic(current->first) != nullptr;
        if (mode == Mode::Idle || (mode != Mode::Socket && !exists)) {
            Remove(current);
        } else if (current->second.source->Unsubscribe()) {
            LetGo(current);
        }
    }
}

}  // namespace orv::bluez
