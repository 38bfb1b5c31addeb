#include "orv/doctor/surroundings.h"

#include <chrono>
#include <cstdio>

#include "orv/terminal/terminal.h"

namespace orv::doctor {

Surroundings::Surroundings(const Library& library)
    : now(library.Find<decltype(OrvWorld_Now)>("OrvWorld_Now")),
      passTime(library.Find<decltype(OrvWorld_PassTime)>("OrvWorld_PassTime")),
      switchRadio(library.Find<decltype(OrvWorld_SwitchRadio)>("OrvWorld_SwitchRadio")) {
    const auto isSimulated =
        library.Find<decltype(OrvWorld_TimeIsSimulated)>("OrvWorld_TimeIsSimulated");
    isSimulatedTime = now && passTime && isSimulated && isSimulated() == 1;
}

std::int64_t Surroundings::Now() const {
    using namespace std::chrono;
    return isSimulatedTime
               ? now()
               : duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void Surroundings::Pass(int milliseconds) const {
    if (isSimulatedTime && !terminal::IsInterrupted()) {
        passTime(milliseconds);
    } else if (!terminal::Pause(milliseconds)) {
        throw Interrupted();
    }
}

std::string Surroundings::WhyNoSwitch() const {
    return switchRadio || (terminal::IsInput() && terminal::IsOutput())
               ? ""
               : "no terminal: a person must switch the radio";
}

bool Surroundings::SwitchRadio(bool on) const {
    if (switchRadio) {
        switchRadio(0, on ? OrvRadioState_On : OrvRadioState_Off);
        return true;
    }
    printf("Switch Bluetooth %s in the system's settings, then press Enter (s and Enter: skip): ",
           on ? "on again" : "off");
    fflush(stdout);
    const auto answer = terminal::ReadInput();
    if (!answer || terminal::IsInterrupted()) {
        throw Interrupted();
    }
    return answer->find('s') == std::string::npos;
}

}  // namespace orv::doctor
