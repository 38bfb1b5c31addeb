#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "orv/scan/history.h"
#include "quelvixwinlib.h"

namespace orv {

enum class TableKind : std::uint8_t {
    Once,     // the list at the end of a scan
    Changes,  // as Once, with the time since each device changed
    Live,     // as Changes, with the latest signals; a device that is gone is grey
};

// Returns a title line and a line for each device, none wider than `columns`. If the terminal is
// narrow, the least important columns of the table are omitted. `history` must contain all devices.
std::vector<std::string> TableOf(const std::vector<DiscoveredDevice>& devices, std::size_t columns,
                                 const ScanHistory& history, TableKind kind);

}  // namespace orv
