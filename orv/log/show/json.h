#pragma once

#include <cstdio>

#include "orv/log/infer/overview.h"

namespace orv::log {

// Writes the calls and notes of a log as one JSON object. Replaces bytes that are not UTF-8.
void WriteJson(std::FILE* file, LogFile& log, Threads threads);

}  // namespace orv::log
