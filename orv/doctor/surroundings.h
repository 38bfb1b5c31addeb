// The clock and the radio switch. The simulated library provides both, so that a run need not wait
// for real time or a person.
#pragma once

#include <cstdint>
#include <string>

#include "orv/library/library.h"

namespace orv::doctor {

class Surroundings {
  public:
    explicit Surroundings(const Library& library);

    bool TimeIsSimulated() const { return isSimulatedTime; }
    // Returns milliseconds; only differences have a meaning.
    std::int64_t Now() const;
    // Waits. Throws Interrupted after Ctrl-C.
    void Pass(int milliseconds) const;

    // Returns why the radio cannot be switched, or an empty string.
    std::string WhyNoSwitch() const;
    // Switches the radio or asks the user to do it. Returns false if the user skips this.
    bool SwitchRadio(bool on) const;

  private:
    bool isSimulatedTime = false;
    decltype(&OrvWorld_Now) now;
    decltype(&OrvWorld_PassTime) passTime;
    decltype(&OrvWorld_SwitchRadio) switchRadio;
};

struct Interrupted {};

}  // namespace orv::doctor
