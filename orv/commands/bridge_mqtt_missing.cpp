// orv bridge mqtt in builds without libmosquitto and on Windows: prints an error.
#include "orv/commands/bridge.h"

namespace orv {

void AddBridgeMqttCommand(Command bridge, LibraryOptions&) {
    Command command = bridge.AddCommand("mqtt", "Not part of this build of orv.");
    command.IgnoreRest();
    command.Does([] {
        throw Problem(ExitStatus::BadUsage,
                      "this orv was built without MQTT. Build it on Linux with the Debian package "
                      "libmosquitto-dev installed");
    });
}

}  // namespace orv
