// The environment of the radio tests: emulated controllers, the Bluetooth daemon, and peripherals
// that execute commands.
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quelvixwinlib.h"

namespace orv::radio {

// A child process with pipes to its standard input and output. The destructor ends it.
class Child {
  public:
    explicit Child(const std::vector<std::string>& command);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    void Kill();
    bool HasDied();
    // Sends a line and returns the line that the child replies, or an empty string if it has ended.
    std::string Ask(const std::string& line);

  private:
    pid_t id = -1;
    int input = -1;
    FILE* output = nullptr;
};

// The library uses the controllers hci0 and hci2. Peripheral 0 uses hci1, and peripheral 1 uses
// hci3. A controller supports one link. Peripheral 1 advertises only on command.
class TestBed {
  public:
    static TestBed& Get();

    // Sends a command to the peripherals. Ask returns the reply. Do fails the running test if the
    // reply is not "ok".
    void Do(const std::string& command);
    std::string Ask(const std::string& command);

    // If the daemon has crashed, prints a message and restarts the daemon.
    void Repair();

    void KillDaemon();
    void StartDaemon();
    void KillControllers();
    void StartControllers();
    // Switches controllers on and makes peripheral 0 advertise and accept connections. Call this
    // after the daemon or a controller was off.
    void Appear();

  private:
    TestBed();

    std::unique_ptr<Child> controllers;
    std::unique_ptr<Child> daemon;
    std::unique_ptr<Child> peripherals;
};

// The addresses of the emulated controllers hci1 and hci3.
constexpr BluetoothAddress First = 0x00AA01010001;
constexpr BluetoothAddress Second = 0x00AA01030003;

}  // namespace orv::radio
