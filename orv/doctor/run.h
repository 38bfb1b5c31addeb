#pragma once

#include <memory>

#include "orv/doctor/examination.h"

namespace orv::doctor {

// Runs all steps. Ends early after Ctrl-C or if a call hangs. Stores why checks were skipped.
void Perform(const std::shared_ptr<Examination>& run);

}  // namespace orv::doctor
