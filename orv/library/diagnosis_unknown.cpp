#include "orv/library/diagnosis.h"

namespace orv {

std::string WhyNotAvailable() {
    return "no Bluetooth radio is on: switch Bluetooth on in the system's settings, or plug a "
           "Bluetooth adapter in";
}

}  // namespace orv
