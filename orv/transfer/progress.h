// How far a transfer is: on a terminal a bar in one line, elsewhere nothing until its end.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "orv/terminal/live.h"

namespace orv {

// Bytes with the unit that suits them, such as "64.0 KiB".
std::string SizeText(double bytes);

class Progress {
  public:
    // `total` 0: nobody knows how many bytes will come.
    Progress(const char* verb, std::uint64_t total);

    void Show(std::uint64_t bytes);
    // Takes the bar away. Returns how long it took and how fast it was, for the line that follows.
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
