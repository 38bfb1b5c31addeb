// One scan, from its start to its end.
#pragma once

#include <vector>

#include "orv/library/library.h"

namespace orv {

using Devices = std::vector<DiscoveredDevice>;

class Scanner {
  public:
    // Starts scanning; throws a Problem when the system refuses.
    explicit Scanner(Library& library);
    // Ends the scan, also on the way out of a failure.
    ~Scanner();
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    void Stop();

    // As they are listed now: a device keeps its place.
    Devices Heard();

  private:
    Library& library;
    std::int32_t id;
    bool isRunning = false;
};

}  // namespace orv
