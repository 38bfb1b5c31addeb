// `orv log report`.
#pragma once

#include <string>

#include "orv/log/history.h"

namespace orv::log {

// Writes the page to `output`. Raises a Problem when a file cannot be read or written.
void WriteReport(const std::string& path, Threads threads, const std::string& output);

}  // namespace orv::log
