#include "agent/client/commands/Commands.h"

namespace NoxAgent {

void AddAllCommands(CommandLine& line, CommandContext& context) {
  AddCreateCommand(line, context);
  AddDescribeCommand(line, context);
  AddEditCommand(line, context);
  AddImportCommand(line, context);
  AddAddCommand(line, context);
  AddListCommand(line, context);
  AddEnableCommands(line, context);
  AddTaskCommands(line, context);
  AddFilesCommand(line, context);
  AddAgentCommands(line, context);
  AddWatchCommand(line, context);
  AddRunCommand(line, context);
  AddStopCommand(line, context);
  AddLogCommand(line, context);
  AddCheckCommand(line, context);
  AddCheckJobCommand(line, context);
  AddSimulateCommand(line, context);
  AddNextCommand(line, context);
  AddExplainCommand(line, context);
}

}  // namespace NoxAgent
