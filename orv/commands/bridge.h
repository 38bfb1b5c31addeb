#pragma once

#include <vector>

#include "orv/bridge/persistent_link.h"
#include "orv/commands/commands.h"

namespace orv {

extern const std::vector<ExitStatus> BridgeStatuses;

void AddLinkOptions(Command command, bridge::LinkOptions& options);

void AddBridgeMqttCommand(Command bridge, LibraryOptions& libraryOptions);

}  // namespace orv
