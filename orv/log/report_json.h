// The data of a report's page.
#pragma once

#include <string>

#include "orv/log/report_collector.h"

namespace orv::log {

struct ReportHead {
    std::string name;  // of the log's file
    bool hasResults;
    Threads threads;
    Totals totals;
};

// JSON that can stand inside a script element: it holds no "<". Its size depends on the number of
// devices, failures and notes up to a limit, not on the length of the log.
std::string ReportJson(const ReportHead& head, const ReportCollector& collected);

}  // namespace orv::log
