// What was heard, as a scenario that the simulated world plays again.
//
// A host sees what it polls: a device's latest record, and a stream of bytes. So a recording holds
// neither packets that changed nothing or came between two polls, nor devices of other kinds, nor
// what the host sent, nor where one notification ended and the next began.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "quelvixwinlib.h"

namespace orv {

using Json = nlohmann::ordered_json;

// Where a recording goes. It is made sure at the beginning that it can be written.
class RecordingFile {
  public:
    explicit RecordingFile(const std::string& name);
    void Write(const Json& scenario) const;

  private:
    std::string name;
};

// Milliseconds since the recording began.
class RecordingClock {
  public:
    std::int64_t Now() const;

  private:
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
};

class ScanRecording {
  public:
    // The devices as they are listed now: each keeps its place.
    void Add(const std::vector<DiscoveredDevice>& devices);
    Json Scenario() const;

  private:
    void AddChange(const DiscoveredDevice* before, const DiscoveredDevice& now);

    RecordingClock clock;
    std::vector<DiscoveredDevice> known;
    Json events = Json::array();
};

class TalkRecording {
  public:
    explicit TalkRecording(BluetoothAddress device) : address(device) {}
    void Add(std::string_view received);
    Json Scenario() const;

  private:
    RecordingClock clock;
    BluetoothAddress address;
    Json events = Json::array();
};

}  // namespace orv
