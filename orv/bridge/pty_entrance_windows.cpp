#include "orv/bridge/entrance.h"
#include "orv/problem.h"

namespace orv::bridge {

std::unique_ptr<Entrance> OpenPty(const std::string&) {
    throw Problem(ExitStatus::BadUsage,
                  "Windows has no pseudo-terminals. Use orv bridge tcp instead");
}

}  // namespace orv::bridge
