#include "agent/client/DocumentFile.h"
#include "agent/client/commands/Commands.h"
#include "agent/document/AsciiDocument.h"
#include "agent/document/TaskDocumentCheck.h"

#include <ctime>
#include <memory>

namespace NoxAgent {

namespace {

struct AddOptions {
  std::string m_File;
  std::string m_Id;
  bool m_Force = false;
};

bool Prevents(const TaskDocumentProblem& problem, bool force) {
  return problem.m_Severity == TaskDocumentSeverity::Error ||
         (problem.m_Severity == TaskDocumentSeverity::NeverRuns && !force);
}

CommandError::Place PlaceOf(const TaskDocumentProblem& problem) {
  return {static_cast<long>(problem.m_Line), static_cast<long>(problem.m_Column)};
}

// The agent would say the same; asked here, the answer names the file and needs no agent.
void Check(const AddOptions& options, const BaseSDK::AString& xml, const CommandContext& context) {
  const long now = std::time(nullptr);
  const LocalCalendar calendar = CalendarForCheck(now);
  const auto problems = CheckTaskDocument(xml, now, &calendar);
  for (const TaskDocumentProblem& problem : problems) {
    if (!Prevents(problem, options.m_Force)) {
      continue;
    }
    const bool canForce = problem.m_Severity == TaskDocumentSeverity::NeverRuns;
    throw CommandError(ExitCode::Usage,
                       options.m_File + ": " + DescribeTaskDocumentProblem(problem).ToUtf8() +
                           (canForce ? " (--force adds it nevertheless)" : ""),
                       canForce ? "never-runs" : "bad-document", PlaceOf(problem));
  }
  for (const TaskDocumentProblem& problem : problems) {
    context.PrintWarning(
        {{"message", options.m_File + ": " + DescribeTaskDocumentProblem(problem).ToUtf8()},
         {"line", problem.m_Line},
         {"column", problem.m_Column}});
  }
}

void Add(const AddOptions& options, const CommandContext& context) {
  const BaseSDK::AString xml = ReadDocument(options.m_File, context.m_In);
  Check(options, xml, context);
  AgentApi agent = context.Agent();
  const AgentApi::AddedTask task =
      agent.AddTask(options.m_Id, AsciiDocument(xml).Text().ToUtf8(), options.m_Force);
  for (const std::string& warning : task.m_JobWarnings) {
    context.PrintWarning({{"id", task.m_Id}, {"message", warning}});
  }
  if (context.m_Json) {
    context.PrintJson({{"id", task.m_Id}});
  } else {
    context.m_Out << task.m_Id << '\n';
  }
}

}  // namespace

void AddAddCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command =
      line.Command("add", "Add a task, or replace the document of an existing one; prints its ID");
  const auto options = std::make_shared<AddOptions>();
  command.Argument("FILE", options->m_File, "task document, - for standard input").Required();
  command.Option("--id", options->m_Id, "the task's ID (default: one is invented)").Takes("ID");
  command.Flag("--force", options->m_Force, "add a task even if it never runs");
  command.OnUse([options, &context] { Add(*options, context); });
}

}  // namespace NoxAgent
