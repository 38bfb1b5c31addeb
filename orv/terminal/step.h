#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "orv/terminal/live.h"

namespace orv::terminal {

// Shows a pending operation, its duration and its time limit until this object is destroyed. Shows
// nothing without a terminal.
class StepLine {
  public:
    // `step` is printable, such as "connecting to A0:B1:C2:D3:E4:F5".
    StepLine(std::string step, int limitSeconds);
    ~StepLine();
    StepLine(const StepLine&) = delete;
    StepLine& operator=(const StepLine&) = delete;

    void Show();
    // Replaces the line of the step with a message on the standard error output.
    void Say(const std::string& message);
    double Seconds() const;

  private:
    void Remove();

    std::string step;
    int limitSeconds;
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
    std::optional<LiveLines> live;
};

// Runs a blocking call on another thread and waits for its end. Shows `step` meanwhile, and
// reports the first interrupt at once.
void Await(const std::string& step, int limitSeconds, const std::function<void()>& call);

}  // namespace orv::terminal
