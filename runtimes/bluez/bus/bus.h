// Connection to the system's D-Bus message bus. Only the event loop's thread may use it. Uses
// sd-bus, because sdbus-c++ would add a thread and throw an exception for each failed call.
#pragma once

#include <systemd/sd-bus.h>

#include <string>
#include <string_view>

#include "runtimes/bluez/bus/loop.h"

namespace orv::bluez {

// Failure of a call. `name` is the D-Bus error name, or empty if the call succeeded. The texts are
// valid until the handler returns; a copy would need memory.
struct Failure {
    std::string_view name;
    std::string_view message;

    explicit operator bool() const { return !name.empty(); }
};

// The name of the failure of a call that could not be sent or whose connection was lost.
constexpr const char* LostName = "org.freedesktop.DBus.Error.Disconnected";

// Handles the result of a call. `reply` is null if the call failed. The bus owns `reply`.
using Reply = std::function<void(const Failure& failure, sd_bus_message* reply)>;
// Appends the arguments of a call. Returns a negative error code if that fails.
using Arguments = std::function<int(sd_bus_message* call)>;

class Bus final : private Pollable {
  public:
    class Listener {
      public:
        virtual void Signalled(sd_bus_message* signal) = 0;
        // The Bluetooth daemon has ended, or the connection is lost and all pending calls have
        // failed.
        virtual void Lost(bool daemonEnded) = 0;
        // The Bluetooth daemon has started. Lost() is always called first.
        virtual void Came() = 0;

      protected:
        ~Listener() = default;
    };

    Bus(Loop& loopOfBus, Listener& listenerOfBus) : loop(loopOfBus), listener(listenerOfBus) {}

    // Connects if there is no connection. If that fails, later calls fail. In that case, and
    // when a connection is lost, the loop calls resumeAfterFailure after a pause.
    void Open();

    // Calls a method of the Bluetooth daemon. `reply`, if there is one, is always called after Call
    // has returned. The call fails if no reply arrives within `limit`. If memory is exhausted, Call
    // throws and `reply` is not called.
    void Call(const std::string& path, const char* interface, const char* member,
              const Arguments& arguments = nullptr, Reply reply = nullptr,
              milliseconds limit = milliseconds(25000));

  private:
    static int OnMatched(sd_bus_message* reply, void* bus, sd_bus_error* error);
    static int OnMessage(sd_bus_message* message, void* bus, sd_bus_error* error);

    Clock::time_point Prepare(pollfd& polled) override;
    void Ready() override;

    int AddMatches();
    int Send(const std::string& path, const char* interface, const char* member,
             const Arguments& arguments, milliseconds limit, void* pending);
    void Close();

    Loop& loop;
    Listener& listener;
    sd_bus* connection = nullptr;
};

}  // namespace orv::bluez
