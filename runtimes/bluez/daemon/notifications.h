// Receives values of devices through sockets or D-Bus signals and passes them to subscribers.
#pragma once

#include <map>

#include "runtimes/bluez/daemon/connection.h"
#include "runtimes/bluez/daemon/notification_pump.h"

namespace orv::bluez {

class Notifications {
  public:
    using Done = std::function<void(bool isOn)>;

    explicit Notifications(Connection& connectionOfNotifications);
    void Start() { pump.Start(); }

    // Only the event loop's thread may call the functions below.
    void Subscribe(const Path& characteristic, UINT64 address, SharedSubscriber subscriber,
                   Done done);
    // Returns without waiting for the daemon.
    void Unsubscribe(const Path& characteristic, const Subscriber& subscriber);

    // Passes on a value that arrived in a D-Bus signal.
    void Value(const Path& characteristic, const Bytes& value);

    // Removes closed subscribers, and subscriptions to removed characteristics. Sockets stay until
    // the daemon closes them, because they may still contain values.
    void Step();
    // Call this when the daemon has ended. The next daemon may behave differently.
    void Forget() { endedAtOnce.clear(); }

  private:
    // Idle: notifications are off. An idle entry remains if memory was exhausted; Step removes it.
    enum class Mode { Idle, Starting, Socket, Signals };
    struct Entry {
        SharedSource source;
        Mode mode = Mode::Idle;
        Clock::time_point since;
        std::vector<Done> waiting;
    };
    using Entries = std::map<Path, Entry>;

    void Acquire(Entry& entry);
    void Acquired(const SharedSource& source, int socket);
    void StartSignals(Entry& entry);
    void Started(Entry& entry, Mode mode);
    void Ended(const SharedSource& source);
    void CountEnd(UINT64 address, bool hasLink);
    void LetGo(Entries::iterator place);
    void Remove(Entries::iterator place);
    Entries::iterator Find(const SharedSource& source);

    Connection& connection;
    Pump pump;
    Entries entries;
    // For each device, the number of sockets that closed immediately.
    std::map<UINT64, int> endedAtOnce;
};

}  // namespace orv::bluez
