#include "agent/client/ChosenZone.h"
#include "agent/client/DocumentFile.h"
#include "agent/client/commands/Commands.h"
#include "agent/document/TaskDocumentCheck.h"

#include <algorithm>
#include <ctime>
#include <memory>

namespace NoxAgent {

namespace {

struct CheckOptions {
  std::vector<std::string> m_Files;
  std::string m_Zone;
};

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

void Check(const CheckOptions& options, CommandContext& context) {
  const ChosenZone zone(options.m_Zone);
  const long now = std::time(nullptr);
  const LocalCalendar calendar = CalendarForCheck(now);
  Json answer = Json::List{};
  for (const std::string& file : options.m_Files) {
    const BaseSDK::AString xml = ReadDocument(file, context.m_In);
    const Problems problems = CheckTaskDocument(xml, now, &calendar);
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
  const auto options = std::make_shared<CheckOptions>();
  command.Argument("FILE", options->m_Files, "task documents, - for standard input").Required();
  command.Option("--zone", options->m_Zone, "time zone: a name or a rule").Takes("ZONE");
  command.OnUse([options, &context] { Check(*options, context); });
}

}  // namespace NoxAgent
