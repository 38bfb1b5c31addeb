// A message bus that the library uses instead of the system bus.
#pragma once

#include <string>

namespace orv::radio {

class PrivateBus {
  public:
    // Does not start the bus. Sets the environment variable for the system bus's address, so create
    // this object before the library's first call.
    PrivateBus();
    ~PrivateBus();

    // `limits` are further elements of the bus's configuration.
    void Start(const std::string& limits = "");
    void Stop();

  private:
    std::string folder;
    int process = -1;
};

}  // namespace orv::radio
