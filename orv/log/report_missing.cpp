// In place of the page, where it was not built.
#include <cstdio>

#include "orv/log/report_command.h"

namespace orv::log {

int WriteReport(const std::string&, Threads, const std::string&) {
    std::fputs("This orv was built without the report page (ORV_REPORT=OFF).\n", stderr);
    return 1;
}

}  // namespace orv::log
