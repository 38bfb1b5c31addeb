// An open link to a device, from connect to disconnect.
#pragma once

#include <string>
#include <string_view>

#include "orv/library/library.h"

namespace orv {

class Link {
  public:
    // Throws a Problem when there is no radio or the device takes no link.
    Link(Library& library, BluetoothAddress address);
    // Disconnects, also on the way out of a failure.
    ~Link();
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;

    // Sends one block. False: it was not confirmed, and nobody knows whether it arrived.
    bool Send(std::string_view block);
    // What has arrived, `most` bytes at most, nothing when there is nothing yet.
    std::string Receive(std::size_t most);
    // Throws away what has arrived. Returns how many bytes that were.
    std::size_t Flush();

  private:
    Library& library;
    BluetoothAddress address;
};

}  // namespace orv
