#pragma once

#include <vector>

#include "orv/library/library.h"

namespace orv {

using Devices = std::vector<DiscoveredDevice>;

class Scanner {
  public:
    // Starts scanning. Throws a Problem if the system rejects the scan.
    explicit Scanner(Library& library);
    ~Scanner();
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    // Starts a new scan after the radio was off, which ended the previous scan.
    void Restart();
    void Stop();

    // The index of a device never changes.
    Devices Heard();

  private:
    Library& library;
    std::int32_t id;
    bool isRunning = false;
    Devices earlier;  // devices of earlier scans; a new scan empties the library's list
};

}  // namespace orv
