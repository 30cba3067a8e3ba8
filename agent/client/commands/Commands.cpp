#include "agent/client/commands/Commands.h"

namespace NoxAgent {

void AddAllCommands(CLI::App& app, CommandContext& context) {
  AddAddCommand(app, context);
  AddListCommand(app, context);
  AddTaskCommands(app, context);
  AddAgentCommands(app, context);
  AddWatchCommand(app, context);
  AddCheckCommand(app, context);
  AddSimulateCommand(app, context);
  AddNextCommand(app, context);
  AddExplainCommand(app, context);
}

}  // namespace NoxAgent
