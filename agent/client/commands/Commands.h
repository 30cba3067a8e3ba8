// The commands of noxctl, one file each or per small group. Each of these functions adds its
// commands to the command line; their work is done while it is parsed.
//
// A new command: a file here with such a function, its declaration below, its call in
// AddAllCommands, a section in noxctl.1 and a word in completion.bash (a test compares them).
#pragma once

#include <CLI/CLI.hpp>

#include "agent/client/CommandContext.h"

namespace NoxAgent {

// `app` and `context` must outlive the parse.
void AddAddCommand(CLI::App& app, CommandContext& context);
void AddAgentCommands(CLI::App& app, CommandContext& context);  // refresh, status, notify
void AddCheckCommand(CLI::App& app, CommandContext& context);
void AddExplainCommand(CLI::App& app, CommandContext& context);
void AddListCommand(CLI::App& app, CommandContext& context);
void AddNextCommand(CLI::App& app, CommandContext& context);
void AddSimulateCommand(CLI::App& app, CommandContext& context);
void AddTaskCommands(CLI::App& app, CommandContext& context);  // show, delete, enable and so on
void AddWatchCommand(CLI::App& app, CommandContext& context);

void AddAllCommands(CLI::App& app, CommandContext& context);

}  // namespace NoxAgent
