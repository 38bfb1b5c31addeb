// A message bus that the library uses as the system's. Its files are in a temporary folder.
#pragma once

#include <string>

namespace orv::radio {

class PrivateBus {
  public:
    // Does not start the bus. Sets the environment variable with the address of the system bus, so
    // create this object before the first call of the library.
    PrivateBus();
    ~PrivateBus();

    // If `permissive` is false, no client may send messages to the Bluetooth daemon.
    void Start(bool permissive = true);
    void Stop();

  private:
    std::string folder;
    int process = -1;
};

}  // namespace orv::radio
