// In place of the page, where it was not built.
#include "orv/log/report_command.h"
#include "orv/problem.h"

namespace orv::log {

void WriteReport(const std::string&, Threads, const std::string&) {
    throw Problem(ExitStatus::BadUsage,
                  "this orv was built without the report page; build it with -DORV_REPORT=ON");
}

}  // namespace orv::log
