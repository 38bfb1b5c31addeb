// `orv log explain`.
#pragma once

#include <string>

#include "orv/log/history.h"

namespace orv::log {

// Writes to the standard output. Raises a Problem when the file cannot be read.
void ExplainLog(const std::string& path, Threads threads, bool json);

}  // namespace orv::log
