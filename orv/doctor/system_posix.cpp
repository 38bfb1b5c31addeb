#include <sys/utsname.h>

#include "orv/doctor/system.h"

namespace orv::doctor::system {

std::string Name() {
    utsname names{};
    uname(&names);
    return std::string(names.sysname) + ' ' + names.release + ' ' + names.machine;
}

bool IsSupported() {
    utsname names{};
    return uname(&names) == 0 && std::string(names.sysname) == "Linux";
}

bool RunInApartment(const std::function<void()>&) {
    return false;
}

}  // namespace orv::doctor::system
