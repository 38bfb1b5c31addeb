// Copies bytes between the link to a device and the client of a socket or pseudo-terminal.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "orv/bridge/entrance.h"
#include "orv/bridge/link_pool.h"
#include "orv/bridge/state_view.h"

namespace orv::bridge {

class Port {
  public:
    // If `isEager`, the port requests the link even without a client.
    Port(std::unique_ptr<Entrance> entrance, std::shared_ptr<PersistentLink> link, bool isEager);

    // Copies the available bytes without blocking.
    void Step();
    // Disconnects the client. Bytes that it has not read are lost. Waits at most until `end` for a
    // pending write, so that its result is counted.
    void End(std::chrono::steady_clock::time_point end);
    StateRow Row() const;

  private:
    using Clock = std::chrono::steady_clock;

    void NoticeClient();
    void ReadClient();
    void WriteClient();
    bool NoticeLoss();
    bool EndClient();

    std::unique_ptr<Entrance> entrance;
    std::shared_ptr<PersistentLink> link;
    bool isEager;
    bool hasEnded = false;
    std::string client;
    std::string pending;  // bytes from the device for the client
    bool hasInputEnded = false;
    std::uint64_t unreadBefore = 0;  // the link's `unread` when the client connected
    Clock::duration silence;         // time since the last byte or the last change of the client
    Clock::time_point lastStep = Clock::now();
    std::string note;
};

// Serves all ports until Ctrl-C, and shows their state.
void Serve(std::vector<Port>& ports);

}  // namespace orv::bridge
