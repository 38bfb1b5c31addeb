// `orv log explain`.
#pragma once

#include <string>

#include "orv/log/history.h"

namespace orv::log {

// Writes to the standard output; gives the exit status.
int ExplainLog(const std::string& path, Threads threads, bool json);

}  // namespace orv::log
