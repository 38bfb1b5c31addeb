#include "runtimes/bluez/bus/bus.h"

#include <poll.h>

#include <cerrno>
#include <cstring>

namespace orv::bluez {

namespace {

constexpr const char* DaemonName = "org.bluez";
constexpr const char* LostName = "org.freedesktop.DBus.Error.Disconnected";

Failure FailureOf(int code) {
    return {
        code == -EACCES || code == -EPERM ? "org.freedesktop.DBus.Error.AccessDenied" : LostName,
        strerror(-code)};
}

}  // namespace

Failure Bus::Open() {
    if (connection != nullptr) {
        return {};
    }
    int code = sd_bus_open_system(&connection);
    if (code >= 0) {
        code = AddMatches();
    }
    if (code < 0) {
        connection = sd_bus_close_unref(connection);
        return FailureOf(code);
    }
    loop.Add(*this);
    return {};
}

// Adds the three matches that the connection needs. Does not wait for the replies, because the bus
// handles the matches before later calls.
int Bus::AddMatches() {
    int code = sd_bus_match_signal_async(connection, nullptr, "org.freedesktop.DBus", nullptr,
                                         "org.freedesktop.DBus", "NameOwnerChanged", &OnOwner,
                                         nullptr, this);
    for (const char* interface :
         {"org.freedesktop.DBus.ObjectManager", "org.freedesktop.DBus.Properties"}) {
        if (code >= 0) {
            code = sd_bus_match_signal_async(connection, nullptr, DaemonName, nullptr, interface,
                                             nullptr, &OnSignal, nullptr, this);
        }
    }
    return code;
}

void Bus::Call(const std::string& path, const char* interface, const char* member,
               const Arguments& arguments, Reply reply, milliseconds limit) {
    calls.push_back({this, std::move(reply), nullptr, {}});
    const auto pending = std::prev(calls.end());
    pending->self = pending;
    const int code = connection == nullptr
                         ? -ENOTCONN
                         : Send(path, interface, member, arguments, limit, *pending);
    if (code < 0) {
        loop.Post([failed = std::move(pending->reply), code] { failed(FailureOf(code), nullptr); });
        calls.erase(pending);
    }
}

int Bus::Send(const std::string& path, const char* interface, const char* member,
              const Arguments& arguments, milliseconds limit, Pending& pending) {
    sd_bus_message* call = nullptr;
    int code = sd_bus_message_new_method_call(connection, &call, DaemonName, path.c_str(),
                                              interface, member);
    if (code >= 0 && arguments) {
        code = arguments(call);
    }
    if (code >= 0) {
        code = sd_bus_call_async(connection, &pending.slot, call, &OnReply, &pending,
                                 static_cast<std::uint64_t>(limit.count()) * 1000);
    }
    sd_bus_message_unref(call);
    return code;
}

void Bus::Finish(std::list<Pending>::iterator pending, const Failure& failure,
                 sd_bus_message* reply) {
    // Removes the call from the list first, because `reply` may change the list.
    std::list<Pending> finished;
    finished.splice(finished.end(), calls, pending);
    sd_bus_slot_unref(finished.front().slot);
    Contained([&] { finished.front().reply(failure, reply); });
}

int Bus::OnReply(sd_bus_message* message, void* pending, sd_bus_error*) {
    auto& call = *static_cast<Pending*>(pending);
    Contained([&] {
        Failure failure;
        if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
            failure = {error->name, error->message ? error->message : ""};
        }
        call.bus->Finish(call.self, failure, failure ? nullptr : message);
    });
    return 0;
}

int Bus::OnSignal(sd_bus_message* message, void* bus, sd_bus_error*) {
    Contained([&] { static_cast<Bus*>(bus)->listener.Signalled(message); });
    return 0;
}

int Bus::OnOwner(sd_bus_message* message, void* bus, sd_bus_error*) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* owner = nullptr;
    if (sd_bus_message_read(message, "sss", &name, &before, &owner) >= 0 &&
        strcmp(name, DaemonName) == 0) {
        auto& listener = static_cast<Bus*>(bus)->listener;
        if (*before != '\0') {
            Contained([&] { listener.DaemonChanged(false); });
        }
        if (*owner != '\0') {
            Contained([&] { listener.DaemonChanged(true); });
        }
    }
    return 0;
}

int Bus::Descriptor() {
    return sd_bus_get_fd(connection);
}

short Bus::Events() {
    const int events = connection == nullptr ? 0 : sd_bus_get_events(connection);
    // Without events to poll for, the connection is broken. Ready then detects the error.
    return static_cast<short>(events <= 0 && connection != nullptr ? POLLIN : events);
}

Clock::time_point Bus::Deadline() {
    std::uint64_t at = UINT64_MAX;
    if (connection == nullptr || sd_bus_get_timeout(connection, &at) < 0 || at == UINT64_MAX) {
        return Clock::time_point::max();
    }
    // `at` and Clock both count from the start of CLOCK_MONOTONIC.
    return Clock::time_point(std::chrono::microseconds(at));
}

void Bus::Ready() {
    int code = 0;
    do {
        code = sd_bus_process(connection, nullptr);
    } while (code > 0 && connection != nullptr);
    if (code < 0) {
        Close();
    }
}

void Bus::Close() {
    loop.Remove(*this);
    connection = sd_bus_close_unref(connection);
    while (!calls.empty()) {
        Finish(calls.begin(), {LostName, "the connection to the message bus is lost"}, nullptr);
    }
    listener.Lost();
}

}  // namespace orv::bluez
