#include "agent/client/DocumentFile.h"
#include "agent/client/commands/Commands.h"
#include "agent/handler/job/Job.h"
#include "agent/handler/job/TrustedFile.h"

#include <memory>

using BaseSDK::AString;
using NoxHandler::Job;

namespace NoxAgent {

namespace {

using JobProblems = std::vector<AString>;

JobProblems ProblemsOf(const std::string& file, const AString& text) {
  const AString name = AString::FromUtf8(file);
  if (text.ToUtf8().size() > NoxHandler::TrustedFile::MaxBytes) {
    return {AString("%1: the job file is larger than 64 KiB").Arg(name)};
  }
  JobProblems problems;
  (void)Job::Parse(name, text, problems);
  return problems;
}

Json JsonOf(const JobProblems& problems) {
  Json list = Json::List{};
  for (const AString& problem : problems) {
    list.Append({{"message", problem.ToUtf8()}});
  }
  return list;
}

void CheckJobs(const std::vector<std::string>& files, CommandContext& context) {
  Json answer = Json::List{};
  for (const std::string& file : files) {
    const JobProblems problems = ProblemsOf(file, ReadDocument(file, context.m_In));
    if (!problems.empty()) {
      context.m_ExitCode = ExitCode::Usage;
    }
    answer.Append({{"file", file}, {"problems", JsonOf(problems)}});
    for (const AString& problem : problems) {
      if (!context.m_Json) {
        context.m_Out << problem.ToUtf8() << '\n';
      }
    }
  }
  if (context.m_Json) {
    context.PrintJson(answer);
  }
}

}  // namespace

void AddCheckJobCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command(
      "check-job", "Tell all problems of job files, nothing when there are none; needs no agent");
  command.Footer("Exit status: 0 no problems, 2 errors or wrong arguments.\n");
  const auto files = std::make_shared<std::vector<std::string>>();
  command.Argument("FILE", *files, "job files, - for standard input").Required();
  command.OnUse([files, &context] { CheckJobs(*files, context); });
}

}  // namespace NoxAgent
