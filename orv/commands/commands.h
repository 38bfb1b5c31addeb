// The commands, a file each. What a command cannot do it throws as a Problem.
#pragma once

#include "orv/session.h"

namespace orv {

// How many bytes are sent at once, unless told otherwise.
constexpr std::size_t UsualBlock = 244;
void AddBlockOption(CLI::App& command, std::size_t& block);

void AddCheckCommand(CLI::App& app, SessionOptions& session);
void AddScanCommand(CLI::App& app, SessionOptions& session);
void AddTalkCommand(CLI::App& app, SessionOptions& session);
void AddSendCommand(CLI::App& app, SessionOptions& session);
void AddReceiveCommand(CLI::App& app, SessionOptions& session);

}  // namespace orv
