// The commands of noxctl: a file for each, or for a small group. Each of these functions adds its
// commands to the command line; a command does its work while the command line is parsed.
//
// A new command: a file here with such a function, its declaration below, its call in
// AddAllCommands, a section in noxctl.1 (a test compares them). The shells' completions ask noxctl.
#pragma once

#include "agent/client/CommandContext.h"
#include "agent/library/CommandLine.h"

namespace NoxAgent {

/// `line` and `context` must outlive the parse.
void AddAddCommand(CommandLine& line, CommandContext& context);
void AddAgentCommands(CommandLine& line, CommandContext& context);  ///< refresh, status, notify
void AddCheckCommand(CommandLine& line, CommandContext& context);
void AddCheckJobCommand(CommandLine& line, CommandContext& context);
void AddCreateCommand(CommandLine& line, CommandContext& context);
void AddDescribeCommand(CommandLine& line, CommandContext& context);
void AddEditCommand(CommandLine& line, CommandContext& context);
void AddEnableCommands(CommandLine& line, CommandContext& context);  ///< and disable
void AddExplainCommand(CommandLine& line, CommandContext& context);
void AddFilesCommand(CommandLine& line, CommandContext& context);
void AddImportCommand(CommandLine& line, CommandContext& context);  ///< of crontabs
void AddListCommand(CommandLine& line, CommandContext& context);
void AddLogCommand(CommandLine& line, CommandContext& context);
void AddNextCommand(CommandLine& line, CommandContext& context);
void AddRunCommand(CommandLine& line, CommandContext& context);
void AddSimulateCommand(CommandLine& line, CommandContext& context);
void AddStopCommand(CommandLine& line, CommandContext& context);
void AddTaskCommands(CommandLine& line,
                     CommandContext& context);  ///< show, delete and so on
void AddWatchCommand(CommandLine& line, CommandContext& context);

void AddAllCommands(CommandLine& line, CommandContext& context);

}  // namespace NoxAgent
