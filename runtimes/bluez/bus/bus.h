// Connection to the system's D-Bus message bus. Only the event loop's thread may use it. Uses
// sd-bus, because sdbus-c++ would add a thread and throw an exception for each failed call.
#pragma once

#include <systemd/sd-bus.h>

#include <string>

#include "runtimes/bluez/bus/loop.h"

namespace orv::bluez {

// Failure of a call. `name` is the D-Bus error name, or empty if the call succeeded.
struct Failure {
    std::string name;
    std::string message;

    explicit operator bool() const { return !name.empty(); }
};

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
        virtual void Lost() = 0;
        // The Bluetooth daemon has started. Lost() is always called first.
        virtual void Came() = 0;

      protected:
        ~Listener() = default;
    };

    Bus(Loop& loopOfBus, Listener& listenerOfBus) : loop(loopOfBus), listener(listenerOfBus) {}

    // Connects if the bus is not connected yet. If that fails, later calls fail.
    void Open();

    // Calls a method of the Bluetooth daemon. `reply`, if there is one, is always called after Call
    // has returned. The call fails if no reply arrives within `limit`.
    void Call(const std::string& path, const char* interface, const char* member,
              const Arguments& arguments = nullptr, Reply reply = nullptr,
              milliseconds limit = milliseconds(25000));

  private:
    static int OnMessage(sd_bus_message* message, void* bus, sd_bus_error* error);

    Clock::time_point Prepare(pollfd& polled) override;
    void Ready() override;

    int AddMatches();
    int Send(const std::string& path, const char* interface, const char* member,
             const Arguments& arguments, milliseconds limit, Reply& pending);
    void Close();

    Loop& loop;
    Listener& listener;
    sd_bus* connection = nullptr;
};

}  // namespace orv::bluez
