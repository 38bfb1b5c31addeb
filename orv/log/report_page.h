// The page around a report's data, as the build made it from orv/report.
#pragma once

#include <string_view>

namespace orv::log {

extern const std::string_view PageBeforeData;
extern const std::string_view PageAfterData;

}  // namespace orv::log
