#include "agent/client/Explanation.h"
#include "agent/client/Simulator.h"
#include "agent/client/TaskSource.h"
#include "agent/client/TimeArgument.h"
#include "agent/client/ZoneInForce.h"
#include "agent/client/commands/Commands.h"

#include <ctime>
#include <memory>

namespace NoxAgent {

namespace {

struct ExplainOptions {
  std::string m_Task, m_At, m_Zone;
};

SimulationRequest RequestFor(const ExplainOptions& options, const TaskSource& source) {
  SimulationRequest request;
  request.m_Command = SimulationRequest::Command::Explain;
  request.m_Documents.push_back(source.m_Document);
  const long now = source.m_Live ? source.m_Live->m_AskedAt : std::time(nullptr);
  request.m_From = options.m_At.empty() ? now : ReadTime("--at", options.m_At);
  const auto comesBack = source.m_Live ? source.m_Live->Return() : std::nullopt;
  if (comesBack && request.m_From >= *comesBack) {
    BeginAtReturn(*source.m_Live, request.m_From, request);
  } else if (source.m_Live) {
    BeginAsAgent(*source.m_Live, request.m_From, request);
  }
  return request;
}

void Explain(const ExplainOptions& options, const CommandContext& context) {
  const TaskSource source = FindTask(options.m_Task, context);
  const ZoneInForce zone(options.m_Zone, source.m_Live);
  const auto gate = source.m_Live ? source.m_Live->m_Gate : Explanation::Gate::Assumed;
  const TaskFacts facts = TaskFactsFrom(AskSimulator(RequestFor(options, source)).at(0));
  const Explanation explanation(source.m_Document, facts, gate, source.m_Live);
  if (context.m_Json) {
    Json answer = explanation.ToJson();
    answer["notes"] = zone.Note().empty() ? Json::List{} : Json::List{zone.Note()};
    return context.PrintJson(answer);
  }
  if (!zone.Note().empty()) {
    context.m_Out << zone.Note() << '\n';
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
