// Shows the state of all links of a bridge: on a terminal as a table, otherwise as lines.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "orv/bridge/persistent_link.h"
#include "orv/terminal/live.h"

namespace orv::bridge {

struct StateRow {
    std::string device;
    std::string place;   // where programs reach the device: an address, a path or a topic
    std::string client;  // program or gateway that uses the device
    LinkStatus status;
    std::string note;  // text for the user besides `status.reason`
};

const char* StateText(LinkState state);

// Shows no data bytes, only their counts.
class StateView {
  public:
    StateView();

    // On a terminal, draws the table four times a second. Otherwise writes a line for each device:
    // at once if its state or client has changed, and after 1 s if only its note has changed.
    void Show(const std::vector<StateRow>& rows);
    // Shows the final counts. Call this before closing the links, because closing may hang.
    void End(const std::vector<StateRow>& rows);

  private:
    void Draw(const std::vector<StateRow>& rows);

    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
    double nextDrawing = 0;
    std::optional<terminal::LiveLines> live;
    struct Shown {
        std::string line;
        std::string client;
        LinkState state = LinkState::Closed;
        double at = -1;
    };
    std::vector<Shown> shown;
};

}  // namespace orv::bridge
