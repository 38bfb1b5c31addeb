// Runs all steps.
#pragma once

#include <memory>

#include "orv/doctor/examination.h"

namespace orv::doctor {

// Returns after the last step, Ctrl-C, or a call that hangs. Stores why checks were not tested.
void Perform(const std::shared_ptr<Examination>& run);

}  // namespace orv::doctor
