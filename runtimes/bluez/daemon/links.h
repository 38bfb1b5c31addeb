// Opens links to devices when they are needed and keeps them while they are used. Only the event
// loop's thread may use this class.
#pragma once

#include <list>

#include "runtimes/bluez/daemon/discovery.h"

namespace orv::bluez {

class Links {
  public:
    // Receives the D-Bus path of the device, or an empty path after a failure.
    using Found = std::function<void(const Path& device)>;
    // Returns true if the device has the D-Bus objects that the caller needs.
    using IsThere = std::function<bool(const Path& device)>;

    Links(Connection& connectionOfLinks, Discovery& discoveryOfLinks)
        : connection(connectionOfLinks), discovery(discoveryOfLinks) {}

    // Looks up a device in the daemon's list. Scans for a device that is no longer in the list.
    void Find(UINT64 address, Found done);
    // Connects if necessary. After the services are resolved, calls `done` as soon as `isThere`
    // returns true, or after a short time if it does not.
    void Open(UINT64 address, IsThere isThere, Found done);

    // Each runtime object for a device is one user of its link. After the last user, RemoveUser
    // starts to close the link if this process opened it.
    void AddUser(UINT64 address) { ++sessions[address].users; }
    void RemoveUser(UINT64 address);

    // Returns true if a request is pending or a device is used or still connected.
    bool AreUsed() const { return !sessions.empty(); }

    // Continues requests, and closes links that are no longer used.
    void Step();
    // Call this when the daemon has ended, because its links have ended too.
    void Forget();

  private:
    // A pending Find or Open. Step checks it after each change of the daemon's objects.
    struct Request {
        UINT64 id;
        UINT64 address;
        bool connect;
        IsThere isThere;
        Found done;
        bool failed = false;
        int attempts = 0;           // number of connect calls
        bool recalling = false;     // a scan for the device runs
        bool recalled = false;      // the scan for the device has timed out
        bool settling = false;      // services are resolved; objects may be missing
        bool settled = false;       // the wait for objects has timed out
        bool waitedForEnd = false;  // the wait for the end of the old link has timed out
    };

    struct Session {
        int users = 0;
        bool opened = false;    // this process opened the link and must close it
        UINT64 connecting = 0;  // the id of a pending connect, or 0
        bool disconnecting = false;
    };

    void Add(Request request);
    // Returns true if the request is done, and sets `device` to its result.
    bool IsDone(Request& request, Path& device);
    bool IsOpen(Request& request, const std::pair<const Path, Device>& device);
    void Recall(Request& request);
    void EndRecall(Request& request);
    bool HasEnded(UINT64 address, Session& session);
    void Connect(UINT64 address, const Path& device);
    void Connected(UINT64 address, UINT64 id, const Failure& failure);
    void Disconnect(UINT64 address, const Path& device);
    // Runs `change` after the delay if the request still exists.
    void Later(UINT64 id, milliseconds delay, std::function<void(Request&)> change);
    void Drop(std::list<Request>::iterator place, const Path& device);

    Connection& connection;
    Discovery& discovery;
    std::map<UINT64, Session> sessions;
    std::list<Request> requests;
    UINT64 lastId = 0;
    bool stepping = false;
    bool changed = false;
};

}  // namespace orv::bluez
