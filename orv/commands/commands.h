// A command throws a Problem if it fails.
#pragma once

#include "orv/library_options.h"

namespace orv {

// Default size of a sent block in bytes. Every link accepts it.
constexpr std::size_t UsualBlock = 20;
void AddBlockOption(Command command, std::size_t& block);

void AddCheckCommand(Command program, LibraryOptions& library);
void AddDoctorCommand(Command program, LibraryOptions& library);
void AddScanCommand(Command program, LibraryOptions& library);
void AddTalkCommand(Command program, LibraryOptions& library);
void AddSendCommand(Command program, LibraryOptions& library);
void AddReceiveCommand(Command program, LibraryOptions& library);
void AddBridgeCommand(Command program, LibraryOptions& library);
void AddVersionCommand(Command program, LibraryOptions& library);

}  // namespace orv
