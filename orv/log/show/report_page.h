// The parts of the report page, which the build generates from orv/report.
#pragma once

#include <span>
#include <string_view>

namespace orv::log {

extern const std::span<const std::string_view> PageBeforeData;
extern const std::span<const std::string_view> PageAfterData;

}  // namespace orv::log
