// `orv log follow`.
#pragma once

#include <string>

#include "orv/log/history.h"

namespace orv::log {

// Runs until the program is interrupted. A file that is not there yet is waited for.
void FollowLog(const std::string& path, Threads threads);

}  // namespace orv::log
