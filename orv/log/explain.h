// From a call to what may have been its cause.
#pragma once

#include "orv/log/call.h"
#include "orv/log/cause.h"

namespace orv::log {

// All causes that the log allows. For a call that succeeded: why it took long, where it did; none
// otherwise. For one whose result is unknown: what it would have been, had it failed.
Suspects Explain(const Call& call);

}  // namespace orv::log
