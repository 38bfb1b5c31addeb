#include "runtimes/bluez/daemon/links.h"

#include <utility>

namespace orv::bluez {

namespace {

constexpr const char* DeviceInterface = "org.bluez.Device1";

// Each of these times is so short that a request ends within the library's timeout of 2000 ms.
constexpr milliseconds RecallLimit{1500};
constexpr milliseconds LookupLingers{1000};
constexpr milliseconds EndOfLinkLimit{1800};
constexpr milliseconds SettlingTime{300};
constexpr milliseconds PauseAfterConnect{100};

// The daemon needs 2 s for a disconnect, or longer when it is busy.
constexpr milliseconds DisconnectLimit{4000};

constexpr int MostAttempts = 5;

bool Contains(const Failure& failure, const char* text) {
    return failure.message.find(text) != std::string::npos;
}

// Returns true if this machine aborted the connect. That sometimes happens although the device is
// in range; a second connect then succeeds.
bool IsBrokenOffLocally(const Failure& failure) {
    return Contains(failure, "abort-by-local") || Contains(failure, "connection abort");
}

bool IsInProgress(const Failure& failure) {
    return failure.name == "org.bluez.Error.InProgress" || Contains(failure, "in progress");
}

}  // namespace

void Links::Find(UINT64 address, Found done) {
    Add({0, address, /*connect=*/false, nullptr, std::move(done)});
}

void Links::Open(UINT64 address, IsThere isThere, Found done) {
    Add({0, address, /*connect=*/true, std::move(isThere), std::move(done)});
}

void Links::Add(Request request) {
    connection.WhenKnown([this, request = std::move(request)] {
        requests.push_back(request);
        requests.back().id = ++lastId;
        if (!request.connect) {
            // The daemon closes a link 2 s after the disconnect call, and with it any link that was
            // opened meanwhile. The lookup of the device waits for the end of an old link, so that
            // the connect after the lookup need not wait.
            Later(lastId, EndOfLinkLimit, [](Request& late) { late.waitedForEnd = true; });
        }
        Step();
    });
}

void Links::RemoveUser(UINT64 address) {
    Session& session = sessions[address];
    if (--session.users > 0) {
        return;
    }
    for (Request& request : requests) {
        request.failed |= request.address == address && request.connect;
    }
    Step();
}

// A finished request's handler may call Step again; the outer call then repeats its loop.
void Links::Step() {
    changed = true;
    if (stepping) {
        return;
    }
    stepping = true;
    // Also resets `stepping` after an exception, which would otherwise end all later steps.
    const struct Reset {
        bool& flag;
        ~Reset() { flag = false; }
    } reset{stepping};
    while (std::exchange(changed, false)) {
        for (auto place = requests.begin(); place != requests.end();) {
            const auto current = place++;
            Path device;
            if (IsDone(*current, device)) {
                Drop(current, device);
                changed = true;
                break;
            }
        }
    }
    for (auto place = sessions.begin(); place != sessions.end();) {
        place = HasEnded(place->first, place->second) ? sessions.erase(place) : std::next(place);
    }
}

// Closes the link of a session without users. Returns true if the session can be deleted.
bool Links::HasEnded(UINT64 address, Session& session) {
    if (session.users > 0 || session.disconnecting || (session.opened && !connection.IsKnown())) {
        return false;
    }
    const auto* const device = connection.tree.FindDevice(address);
    if (session.opened && device != nullptr && (device->second.connected || session.connecting)) {
        Disconnect(address, device->first);
        return false;
    }
    session.opened = false;
    return !session.connecting;
}

void Links::Drop(std::list<Request>::iterator place, const Path& device) {
    std::list<Request> finished;
    finished.splice(finished.end(), requests, place);
    if (finished.front().recalling) {
        // Scans a little longer after a lookup, because some daemons remove the device when the
        // scan ends, and the caller connects next.
        const milliseconds delay = finished.front().connect ? milliseconds(0) : LookupLingers;
        Loop& loop = connection.loop;
        if (!loop.Attempt([&] { loop.After(delay, [this] { discovery.Release(); }); })) {
            discovery.Release();
        }
    }
    connection.loop.Attempt([&] { finished.front().done(device); });
}

bool Links::IsDone(Request& request, Path& device) {
    Session& session = sessions[request.address];
    const auto* const found = connection.tree.FindDevice(request.address);
    if (request.failed || (session.disconnecting && !request.waitedForEnd)) {
        return request.failed;
    }
    if (found == nullptr) {
        session.connecting = 0;  // the daemon ended a pending Connect when it removed the device
        Recall(request);
        return !request.recalling;
    }
    if (request.connect && !IsOpen(request, *found)) {
        return request.failed;
    }
    discovery.Remember(request.address);
    device = found->first;
    return true;
}

// Scans again for a device that was found before, because the daemon removes devices about 30 s
// after a scan and connects only to listed ones. Requests for other devices fail at once.
void Links::Recall(Request& request) {
    if (connection.tree.ScanningAdapter() == nullptr) {
        EndRecall(request);
        return;
    }
    if (request.recalling || request.recalled || !discovery.IsRemembered(request.address)) {
        return;
    }
    Later(request.id, RecallLimit, [this](Request& late) {
        late.recalled = true;
        if (connection.tree.FindDevice(late.address) == nullptr) {
            EndRecall(late);
        }
    });
    request.recalling = true;
    discovery.Hold();
}

void Links::EndRecall(Request& request) {
    if (std::exchange(request.recalling, false)) {
        discovery.Release();
    }
}

bool Links::IsOpen(Request& request, const std::pair<const Path, Device>& device) {
    const Session& session = sessions[request.address];
    if (!device.second.connected) {
        request.settling = request.settled = false;
        if (!session.connecting) {
            request.failed = ++request.attempts > MostAttempts;
            if (!request.failed) {
                Connect(request.address, device.first);
            }
        }
        return false;
    }
    if (!device.second.resolved) {
        return false;
    }
    if (request.settled || request.isThere(device.first)) {
        return true;
    }
    // The daemon sometimes reports services as resolved before their objects exist.
    if (!request.settling) {
        Later(request.id, SettlingTime, [](Request& late) { late.settled = true; });
        request.settling = true;
    }
    return false;
}

void Links::Connect(UINT64 address, const Path& device) {
    connection.bus.Call(
        device, DeviceInterface, "Connect", nullptr,
        [this, address, id = ++lastId](const Failure& failure, sd_bus_message*) {
            // Waits, because the link's D-Bus signal may follow the reply, or another program's
            // connect may still be in progress.
            const bool waits = (!failure || IsInProgress(failure)) && connection.loop.Attempt([&] {
                connection.loop.After(PauseAfterConnect, [=] { Connected(address, id, {}); });
            });
            if (!waits) {
                Connected(address, id, failure);
            }
        });
    Session& session = sessions[address];
    session.connecting = lastId;
    session.opened = true;
}

void Links::Connected(UINT64 address, UINT64 id, const Failure& failure) {
    Session& session = sessions[address];
    if (session.connecting != id) {
        return;  // this connect was aborted
    }
    session.connecting = 0;
    // If the daemon has removed the device meanwhile, Step scans for it again.
    const bool isFinal =
        failure && !IsBrokenOffLocally(failure) && connection.tree.FindDevice(address) != nullptr;
    for (Request& request : requests) {
        request.failed |= isFinal && request.address == address && request.connect;
    }
    Step();
}

void Links::Disconnect(UINT64 address, const Path& device) {
    connection.bus.Call(
        device, DeviceInterface, "Disconnect", nullptr,
        [this, address](const Failure& failure, sd_bus_message*) {
            Session& session = sessions[address];
            session.disconnecting = false;
            session.connecting = 0;  // the disconnect has aborted the connect
            // Without a reply, the link may still be open. Step then disconnects again.
            session.opened |= failure.name == LostName || failure.name == SD_BUS_ERROR_NO_REPLY;
            Step();
        },
        DisconnectLimit);
    sessions[address].disconnecting = true;
    sessions[address].opened = false;
}

void Links::Later(UINT64 id, milliseconds delay, std::function<void(Request&)> change) {
    connection.loop.After(delay, [this, id, change = std::move(change)] {
        for (Request& request : requests) {
            if (request.id == id) {
                change(request);
            }
        }
        Step();
    });
}

void Links::Forget() {
    for (auto& entry : sessions) {
        entry.second.opened = false;
    }
}

}  // namespace orv::bluez
