// Stores which devices the system knows and when connecting to them timed out.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>

#include "orv/log/infer/call.h"

namespace orv::log {

class DeviceHistory {
  public:
    void AddAdvertisement(std::uint64_t address) { devices[address].isKnown = true; }

    DeviceEvidence Before(const Subject& subject, std::int64_t time) const;

    void Add(const Call& call);

  private:
    struct Device {
        bool isKnown = false;
        std::optional<std::int64_t> lastTimeout;  // start of the latest connect that timed out
    };
    std::unordered_map<std::uint64_t, Device> devices;
};

}  // namespace orv::log
