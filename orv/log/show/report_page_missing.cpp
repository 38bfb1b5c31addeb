// An empty report page, for builds without the report.
#include "orv/log/show/report_page.h"

namespace orv::log {

const std::span<const std::string_view> PageBeforeData;
const std::span<const std::string_view> PageAfterData;

}  // namespace orv::log
