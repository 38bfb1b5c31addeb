// The scan that all advertisement watchers share. Only the event loop's thread may use it.
#pragma once

#include <set>

#include "runtimes/bluez/daemon/connection.h"
#include "runtimes/objects/advertisement.h"

namespace orv::bluez {

class Watcher {
  public:
    virtual void Hear(const objects::SharedPacket& packet) = 0;

  protected:
    ~Watcher() = default;
};

// Scans while an adapter is on and a watcher exists or Hold was called without Release.
// Restarts the scan after the adapter or the daemon was off.
class Discovery {
  public:
    explicit Discovery(Connection& connectionOfDiscovery) : connection(connectionOfDiscovery) {}

    using Watchers = std::set<std::shared_ptr<Watcher>>;

    // Keeps the watchers alive until Remove. Moves them out of `added`: a copy would need memory.
    void Add(Watchers& added);
    void Remove(const std::shared_ptr<Watcher>& watcher);
    void Hold();
    void Release();

    bool IsWanted() const { return !watchers.empty() || holds > 0; }
    // Stores that a device was found. The daemon may remove the device later.
    void Remember(UINT64 address);
    bool IsRemembered(UINT64 address) const { return remembered.count(address) != 0; }

    void Heard(const Device& device, bool withData);
    // Starts or stops the scan if necessary.
    void Step();
    // Call this when the daemon has ended or the connection is lost, because the scans have ended.
    void Forget();

  private:
    void Send(objects::Packet packet);
    void StartOn(const Path& adapter);
    void Started(Path& adapter, const Failure& failure);
    void Pause();
    void Stop(const Path& adapter);

    Connection& connection;
    Watchers watchers;
    std::set<UINT64> remembered;
    int holds = 0;
    Path scanning;         // the adapter whose scan this process started, or empty
    Path leftOn;           // the adapter whose scan could not be stopped, or empty
    bool pending = false;  // a start or stop of the scan is pending
    bool paused = false;   // no start or stop is tried now: one failed recently
};

}  // namespace orv::bluez
