#include "agent/client/DocumentFile.h"
#include "agent/client/commands/Commands.h"
#include "agent/document/TaskDocumentCheck.h"

#include <algorithm>
#include <ctime>
#include <memory>

namespace NoxAgent {

namespace {

using Problems = std::vector<TaskDocumentProblem>;

const char* NameOf(TaskDocumentSeverity severity) {
  switch (severity) {
    case TaskDocumentSeverity::Warning:
      return "warning";
    case TaskDocumentSeverity::NeverRuns:
      return "never runs";
    default:
      return "error";
  }
}

void Print(const std::string& file, const Problems& problems, std::ostream& out) {
  for (const TaskDocumentProblem& problem : problems) {
    out << file << ':' << problem.m_Line << ':' << problem.m_Column << ": "
        << NameOf(problem.m_Severity) << ": " << problem.m_Message.ToUtf8()
        << "\n    effect: " << problem.m_Effect.ToUtf8()
        << "\n    mend:   " << problem.m_Mend.ToUtf8() << '\n';
  }
}

Json ToJson(const Problems& problems) {
  Json list = Json::List{};
  for (const TaskDocumentProblem& problem : problems) {
    list.Append({{"severity", NameOf(problem.m_Severity)},
                 {"line", problem.m_Line},
                 {"column", problem.m_Column},
                 {"message", problem.m_Message.ToUtf8()},
                 {"effect", problem.m_Effect.ToUtf8()},
                 {"mend", problem.m_Mend.ToUtf8()}});
  }
  return list;
}

// A task that never runs is an error: the agent refuses it as well.
ExitCode Verdict(const Problems& problems) {
  if (HasTaskDocumentProblem(problems, TaskDocumentSeverity::NeverRuns)) {
    return ExitCode::Usage;
  }
  return problems.empty() ? ExitCode::Ok : ExitCode::Failed;
}

void Check(const std::vector<std::string>& files, CommandContext& context) {
  Json answer = Json::List{};
  for (const std::string& file : files) {
    const BaseSDK::AString xml = ReadDocument(file, context.m_In);
    const Problems problems = CheckTaskDocument(xml, std::time(nullptr));
    context.m_ExitCode = std::max(context.m_ExitCode, Verdict(problems));
    if (context.m_Json) {
      answer.Append({{"file", file}, {"problems", ToJson(problems)}});
    } else {
      Print(file, problems, context.m_Out);
    }
  }
  if (context.m_Json) {
    context.PrintJson(answer);
  }
}

}  // namespace

void AddCheckCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command(
      "check", "Tell all problems of task documents, nothing when there are none; needs no agent");
  command.Footer("Exit status: 0 no problems, 1 warnings, 2 errors or wrong arguments.\n");
  const auto files = std::make_shared<std::vector<std::string>>();
  command.Argument("FILE", *files, "task documents, - for standard input").Required();
  command.OnUse([files, &context] { Check(*files, context); });
}

}  // namespace NoxAgent
