// Calls and notes for programs.
#pragma once

#include <cstdio>
#include <string>

#include "orv/log/findings.h"

namespace orv::log {

// One JSON object: file, lines, first, last, hasResults, threads, calls, notes. Text that is not
// UTF-8 has its bytes replaced.
void WriteJson(std::FILE* file, const std::string& name, const Findings& findings);

}  // namespace orv::log
