#pragma once

#include <cstddef>

#include "orv/doctor/examination.h"
#include "orv/log/read/entry.h"

namespace orv::doctor {

// Counts the lines of `kind` after the first `size` bytes of the library's log. Ignores
// notifications of devices other than `run.device`.
std::size_t CountSince(const Examination& run, std::uintmax_t size, log::Kind kind);

}  // namespace orv::doctor
