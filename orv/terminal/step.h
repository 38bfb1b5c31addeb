// Shows a step that takes seconds, with its duration and its time limit.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "orv/terminal/live.h"

namespace orv::terminal {

// Shows a line on a terminal until it is destroyed. Without a terminal, shows nothing.
class StepLine {
  public:
    // `step` is printable, such as "connecting to A0:B1:C2:D3:E4:F5".
    StepLine(std::string step, int limitSeconds);
    ~StepLine();
    StepLine(const StepLine&) = delete;
    StepLine& operator=(const StepLine&) = delete;

    void Show();
    // Replaces the line by a message on the standard error.
    void Say(const std::string& message);
    double Seconds() const;

  private:
    void Remove();

    std::string step;
    int limitSeconds;
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
    std::optional<LiveLines> live;
};

// Runs a blocking call on another thread until it ends. Shows the step during the call, and reports
// the first interrupt at once.
void Await(const std::string& step, int limitSeconds, const std::function<void()>& call);

}  // namespace orv::terminal
