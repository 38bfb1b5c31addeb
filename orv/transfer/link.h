#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "orv/library/library.h"
#include "orv/problem.h"

namespace orv {

class Link {
  public:
    // Connects. If this fails at once, scans for the device and connects again, because the system
    // rejects a device that it has never heard. Throws a Problem if no radio is on, if it cannot
    // connect, or after an interrupt.
    Link(Library& library, BluetoothAddress address);
    // Disconnects. May never return.
    ~Link();
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    BluetoothAddress Address() const { return address; }

    // Returns false if the block was not confirmed; it may still have arrived.
    bool Send(std::string_view block);
    // Returns at most `most` bytes that have arrived, possibly none.
    std::string Receive(std::size_t most);
    // Discards the bytes that have arrived and returns their number.
    std::size_t Flush();

  private:
    bool Connect();
    void Disconnect();

    Library& library;
    BluetoothAddress address;
};

// Runs `body` with an open link. Flushes the output and reports failures before the disconnect,
// which may never return.
template <typename Body>
void WithLink(Library& library, BluetoothAddress address, Body&& body) {
    Link link(library, address);
    try {
        body(link);
    } catch (Problem& problem) {
        Report(problem);
        throw;
    }
    fflush(stdout);
}

}  // namespace orv
