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

// Returns JSON of limited size without "<", so that a script element can contain it.
std::string ReportJson(const ReportHead& head, const ReportCollector& collected);

}  // namespace orv::log
