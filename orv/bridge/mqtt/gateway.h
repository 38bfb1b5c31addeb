// A gateway of a site: publishes devices and their bytes to an MQTT broker, and executes commands.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "orv/bridge/mqtt/heard_devices.h"
#include "orv/bridge/mqtt/site_device.h"

namespace orv::bridge {

class Gateway {
  public:
    // `place` is the broker's address, for the state table.
    Gateway(Library& library, const SiteDevice::Site& site, std::string place);

    // Returns this gateway's status, a retained message that also serves as its last will.
    static Message Status(const Topics& topics, bool isOnline, std::int64_t run,
                          std::uint64_t refused);

    // Call this at intervals of PollEvery.
    void Step();
    // Closes all links without blocking. Call this until it returns true: all links are closed, and
    // the broker is offline or has confirmed all messages.
    bool End();
    // The first row describes the broker.
    std::vector<StateRow> Rows() const;

  private:
    // Returns why the message is rejected, or an empty string.
    std::string Take(const Message& message, Time now);
    void TakeStatus(const std::string& gateway, const Message& message, Time now);
    void PublishStatus(Time now);
    void MeetDevices(Time now);
    void StepDevices(bool canClaim, Time now);

    const SiteDevice::Site& site;
    const std::string place;
    HeardDevices heard;
    std::map<BluetoothAddress, SiteDevice> devices;
    std::uint64_t connection = 0;
    Time claimsKnown;  // time by which the retained claims have arrived
    bool isEnding = false;
    std::uint64_t refused = 0;
    Time statusPublished;
    std::string status;
    std::string note;
};

}  // namespace orv::bridge
