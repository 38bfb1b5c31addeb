#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orv::model {

using Lines = std::vector<std::string>;

// Throws std::runtime_error if the numbers differ.
void CheckEqual(const char* name, std::int64_t actual, std::int64_t expected);

// Waits until the simulated world has delivered every event.
void Settle();

class LogComparison {
  public:
    // Must be called after the log was emptied.
    void Restart() { position = 0; }

    // Throws std::runtime_error if the new lines of the log differ from `expected`. `ordered` is
    // false if callbacks run in parallel and may write their lines in any order.
    void Check(Lines expected, bool ordered);

  private:
    long position = 0;
};

}  // namespace orv::model
