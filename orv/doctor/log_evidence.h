// Counts lines of the library's log.
#pragma once

#include <cstddef>

#include "orv/doctor/examination.h"
#include "orv/log/read/entry.h"

namespace orv::doctor {

// Counts lines of one kind after `size` bytes of the log, but not other devices' notifications.
std::size_t CountSince(const Examination& run, std::uintmax_t size, log::Kind kind);

}  // namespace orv::doctor
