#include "tests/radio/private_bus.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace orv::radio {

PrivateBus::PrivateBus() {
    char name[] = "/tmp/orv-bus-XXXXXX";
    folder = mkdtemp(name);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + folder + "/socket").c_str(), 1);
}

PrivateBus::~PrivateBus() {
    Stop();
    unlink((folder + "/config").c_str());
    rmdir(folder.c_str());
}

void PrivateBus::Start(const std::string& limits) {
    std::ofstream(folder + "/config")
        << "<busconfig><type>system</type><listen>unix:path=" << folder << "/socket</listen>"
        << "<auth>EXTERNAL</auth><policy context='default'><allow user='*'/><allow own='*'/>"
        << "<allow send_type='*' eavesdrop='false'/><allow receive_type='*'/></policy>" << limits
        << "</busconfig>";
    const std::string config = "--config-file=" + folder + "/config";
    int ready[2];
    if (pipe(ready) != 0) {
        throw std::runtime_error("no pipe");
    }
    const std::string print = "--print-address=" + std::to_string(ready[1]);
    const char* arguments[] = {"dbus-daemon", config.c_str(), "--nofork", print.c_str(), nullptr};
    if (posix_spawnp(&process, "dbus-daemon", nullptr, nullptr, const_cast<char**>(arguments),
                     environ) != 0) {
        throw std::runtime_error("there is no dbus-daemon");
    }
    close(ready[1]);
    char byte;
    if (read(ready[0], &byte, 1) != 1) {
        throw std::runtime_error("dbus-daemon does not start");
    }
    close(ready[0]);
}

void PrivateBus::Stop() {
    if (process > 0) {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
        process = -1;
    }
    unlink((folder + "/socket").c_str());
}

}  // namespace orv::radio
