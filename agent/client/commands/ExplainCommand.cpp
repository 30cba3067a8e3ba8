#include "agent/client/ChosenZone.h"
#include "agent/client/Explanation.h"
#include "agent/client/Simulator.h"
#include "agent/client/TaskSource.h"
#include "agent/client/TimeArgument.h"
#include "agent/client/commands/Commands.h"

#include <ctime>
#include <memory>

namespace NoxAgent {

namespace {

struct ExplainOptions {
  std::string m_Task, m_At, m_Zone;
};

// The scheduler's report on itself says it in its last line.
Explanation::Gate GateOf(const Json& status) {
  for (const Json& plugin : status.Items("plugins")) {
    const std::string report = plugin.Text("report", "");
    if (report.find("Task processing is enabled.") != std::string::npos) {
      return Explanation::Gate::Open;
    }
    if (report.find("Task processing is disabled.") != std::string::npos) {
      return Explanation::Gate::Closed;
    }
  }
  return Explanation::Gate::Assumed;
}

void Explain(const ExplainOptions& options, const CommandContext& context) {
  const ChosenZone zone(options.m_Zone);
  const TaskSource source = FindTask(options.m_Task, context);
  SimulationRequest request;
  request.m_Command = SimulationRequest::Command::Explain;
  request.m_Documents.push_back(source.m_Document);
  request.m_From = options.m_At.empty() ? std::time(nullptr) : ReadTime("--at", options.m_At);
  const Explanation::Gate gate =
      source.m_FromAgent ? GateOf(context.Agent().Status()) : Explanation::Gate::Assumed;
  const TaskFacts facts = TaskFactsFrom(AskSimulator(request).at(0));
  const Explanation explanation(source.m_Document, facts, gate);
  if (context.m_Json) {
    return context.PrintJson(explanation.ToJson());
  }
  explanation.Print(context.m_Out);
}

}  // namespace

void AddExplainCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command(
      "explain", "Tell why a task runs or does not run at a moment; a file needs no agent");
  const auto options = std::make_shared<ExplainOptions>();
  command.Argument("TASK", options->m_Task, "task document, - for standard input, or task ID")
      .Required();
  command.Option("--at", options->m_At, "the moment (default: now)").Takes("TIME");
  command.Option("--zone", options->m_Zone, "time zone: a name or a rule").Takes("ZONE");
  command.OnUse([options, &context] { Explain(*options, context); });
}

}  // namespace NoxAgent
