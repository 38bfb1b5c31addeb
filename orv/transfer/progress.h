#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "orv/terminal/live.h"

namespace orv {

// Returns a text with a suitable unit, such as "64.0 KiB".
std::string SizeText(double bytes);

class Progress {
  public:
    // `total` is a number of bytes, or 0 if it is unknown.
    Progress(const char* verb, std::uint64_t total);

    void Show(std::uint64_t bytes);
    // Removes the bar. Returns a text with the duration and the speed.
    std::string End(std::uint64_t bytes);

  private:
    double Seconds() const;

    const char* verb;
    std::uint64_t total;
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
    double drawnAt = -1;
    std::optional<terminal::LiveLines> live;
};

}  // namespace orv
