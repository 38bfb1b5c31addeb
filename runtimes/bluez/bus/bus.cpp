#include "runtimes/bluez/bus/bus.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include "runtimes/bluez/bus/message.h"

namespace orv::bluez {

namespace {

constexpr milliseconds PauseWithoutBus{100};

struct PendingCall {
    Loop& loop;
    Reply reply;

    // Calls the handler once. Later calls do nothing.
    void Finish(const Failure& failure, sd_bus_message* message) {
        if (const Reply handler = std::exchange(reply, nullptr)) {
            loop.Attempt([&] { handler(failure, message); });
        }
    }
};

int OnReply(sd_bus_message* message, void* pending, sd_bus_error*) {
    Failure failure;
    if (const sd_bus_error* error = sd_bus_message_get_error(message)) {
        failure = {error->name, error->message ? error->message : ""};
    }
    static_cast<PendingCall*>(pending)->Finish(failure, failure ? nullptr : message);
    return 0;
}

// The bus calls this after the reply, or without a reply when the connection is closed.
void OnCallEnded(void* pending) {
    const std::unique_ptr<PendingCall> ended(static_cast<PendingCall*>(pending));
    ended->Finish({LostName, "the connection to the message bus is lost"}, nullptr);
}

}  // namespace

void Bus::Open() {
    if (connection != nullptr) {
        return;
    }
    if (sd_bus_open_system(&connection) < 0 || AddMatches() < 0) {
        connection = sd_bus_close_unref(connection);
        loop.ResumeAfter(PauseWithoutBus);
        return;
    }
    loop.Watch(this);
}

// Does not wait for the replies, because the bus handles the match rules before later calls. The
// rules exclude signals that the library ignores, because each signal wakes the loop. One
// filter handles all signals, because sd-bus needs some 2,500 instructions to find a signal's rule.
int Bus::AddMatches() {
    int code = sd_bus_add_filter(connection, nullptr, &OnMessage, this);
    for (const char* rule :
         {"type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='org.bluez'",
          "type='signal',sender='org.bluez',interface='org.freedesktop.DBus.ObjectManager'",
          "type='signal',sender='org.bluez',arg0='org.bluez.Adapter1'",
          "type='signal',sender='org.bluez',arg0='org.bluez.Device1'",
          "type='signal',sender='org.bluez',arg0='org.bluez.GattCharacteristic1'"}) {
        if (code >= 0) {
            code = sd_bus_call_method_async(connection, nullptr, "org.freedesktop.DBus",
                                            "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                            "AddMatch", &OnMatched, this, "s", rule);
        }
    }
    return code;
}

void Bus::Call(const std::string& path, const char* interface, const char* member,
               const Arguments& arguments, Reply reply, milliseconds limit) {
    std::unique_ptr<PendingCall> pending(new PendingCall{loop, std::move(reply)});
    const int code = connection == nullptr
                         ? -ENOTCONN
                         : Send(path, interface, member, arguments, limit, pending.get());
    if (CheckMemory(code) >= 0) {
        static_cast<void>(pending.release());  // OnCallEnded deletes it
    } else if (pending->reply) {
        loop.Post([failed = std::move(pending->reply), code] {
            failed({LostName, strerror(-code)}, nullptr);
        });
    }
}

int Bus::Send(const std::string& path, const char* interface, const char* member,
              const Arguments& arguments, milliseconds limit, void* pending) {
    sd_bus_message* call = nullptr;
    sd_bus_slot* slot = nullptr;
    int code = sd_bus_message_new_method_call(connection, &call, "org.bluez", path.c_str(),
                                              interface, member);
    if (code >= 0 && arguments) {
        code = arguments(call);
    }
    if (code >= 0) {
        code = sd_bus_call_async(connection, &slot, call, &OnReply, pending,
                                 static_cast<std::uint64_t>(limit.count()) * 1000);
    }
    if (code >= 0) {
        sd_bus_slot_set_destroy_callback(slot, &OnCallEnded);
        sd_bus_slot_set_floating(slot, 1);  // the bus owns the slot from now on
    }
    sd_bus_slot_unref(slot);
    sd_bus_message_unref(call);
    return code;
}

// If the bus rejects a rule, closes the connection, which is useless without signals.
int Bus::OnMatched(sd_bus_message* reply, void* bus, sd_bus_error*) {
    if (sd_bus_message_is_method_error(reply, nullptr) != 0) {
        sd_bus_close(static_cast<Bus*>(bus)->connection);
    }
    return 0;
}

int Bus::OnMessage(sd_bus_message* message, void* bus, sd_bus_error*) {
    Bus& self = *static_cast<Bus*>(bus);
    if (sd_bus_message_is_signal(message, "org.freedesktop.DBus.Properties", nullptr) > 0 ||
        sd_bus_message_is_signal(message, "org.freedesktop.DBus.ObjectManager", nullptr) > 0) {
        self.listener.Signalled(message);
        return 1;
    }
    const char* name = nullptr;
    const char* before = nullptr;
    const char* owner = nullptr;
    if (sd_bus_message_is_signal(message, "org.freedesktop.DBus", "NameOwnerChanged") > 0 &&
        sd_bus_message_read(message, "sss", &name, &before, &owner) >= 0) {
        self.loop.Attempt([&] { self.listener.Lost(/*daemonEnded=*/true); });
        if (*owner != '\0') {
            self.loop.Attempt([&] { self.listener.Came(); });
        }
    }
    return 0;
}

Clock::time_point Bus::Prepare(pollfd& polled) {
    const int events = sd_bus_get_events(connection);
    // If there are no events to poll for, the connection is broken. Ready then detects the error.
    polled = {sd_bus_get_fd(connection), static_cast<short>(events > 0 ? events : POLLIN), 0};
    std::uint64_t at = UINT64_MAX;
    // `at` and Clock both count from the start of CLOCK_MONOTONIC.
    return sd_bus_get_timeout(connection, &at) < 0 || at == UINT64_MAX
               ? Clock::time_point::max()
               : Clock::time_point(std::chrono::microseconds(at));
}

void Bus::Ready() {
    int code = 0;
    do {
        code = sd_bus_process(connection, nullptr);
    } while (code > 0);
    if (code < 0) {
        Close();
    }
}

// Clears `connection` first, because handlers of failed calls may open a new connection.
void Bus::Close() {
    loop.Watch(nullptr);
    loop.ResumeAfter(PauseWithoutBus);
    sd_bus_close_unref(std::exchange(connection, nullptr));
    listener.Lost(/*daemonEnded=*/false);
}

}  // namespace orv::bluez
