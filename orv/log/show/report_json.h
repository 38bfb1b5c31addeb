// The data of a report's page.
#pragma once

#include <string>

#include "orv/log/show/report_collector.h"

namespace orv::log {

struct ReportHead {
    std::string name;  // path of the log
    bool hasResults;
    Threads threads;
    Totals totals;
};

// Returns JSON without "<", so that a script element can contain it. Its size is limited, however
// long the log is.
std::string ReportJson(const ReportHead& head, const ReportCollector& collected);

}  // namespace orv::log
