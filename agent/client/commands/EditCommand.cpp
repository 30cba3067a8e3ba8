#include "agent/client/EditedFiles.h"
#include "agent/client/TaskPhrase.h"
#include "agent/client/TaskSource.h"
#include "agent/client/TaskWithJob.h"
#include "agent/client/ZoneInForce.h"
#include "agent/client/commands/Commands.h"
#include "agent/document/AsciiDocument.h"
#include "agent/document/TaskDocumentCheck.h"
#include "agent/handler/job/Job.h"

#include <BaseSDK/AString.h>

#include <ctime>
#include <memory>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

constexpr std::size_t DocumentFile = 0;
constexpr std::size_t JobFile = 1;

struct Texts {
  std::string m_Document, m_Job;

  bool operator==(const Texts&) const = default;
};

void AddDocumentProblems(const std::string& name, const std::string& document,
                         std::vector<std::string>& problems) {
  for (const TaskDocumentProblem& problem :
       CheckTaskDocument(AString::FromUtf8(document), std::time(nullptr))) {
    if (problem.m_Severity >= TaskDocumentSeverity::NeverRuns) {
      problems.push_back(name + ".xml: " + DescribeTaskDocumentProblem(problem).ToUtf8());
    }
  }
}

void AddJobProblems(const std::string& name, const std::string& job,
                    std::vector<std::string>& problems) {
  std::vector<AString> found;
  (void)NoxHandler::Job::Parse(AString::FromUtf8(name + ".job"), AString::FromUtf8(job), found);
  for (const AString& problem : found) {
    problems.push_back(problem.ToUtf8());
  }
}

class Editing {
 public:
  Editing(const std::string& id, AgentApi& agent, const CommandContext& context)
      : m_Id(id), m_Agent(agent), m_Context(context), m_Before(Read()) {}

  void Run() {
    EditedFiles files({{m_Id + ".xml", m_Before.m_Document}, {m_Id + ".job", m_Before.m_Job}});
    for (;;) {
      files.Edit();
      const Texts after{files.Text(DocumentFile), files.Text(JobFile)};
      if (after == m_Before) {
        m_Context.m_Out << "nothing was changed\n";
        return;
      }
      const std::vector<std::string> problems = ApplyOrKeep(after, files);
      if (problems.empty()) {
        PrintWords();
        return;
      }
      if (!IsToBeEditedAgain(problems)) {
        throw CommandError(ExitCode::Usage,
                           "nothing was changed; what was edited is in " + files.Keep().string());
      }
    }
  }

 private:
  Texts Read() {
    const auto document = m_Agent.TaskXml(m_Id);
    if (!document) {
      throw CommandError(ExitCode::Failed,
                         "there is no task " + m_Id + "; noxctl list shows the tasks");
    }
    return {*document, m_Agent.JobText(m_Id).value_or("")};
  }

  // What was typed is not lost when the agent cannot take it.
  std::vector<std::string> ApplyOrKeep(const Texts& after, EditedFiles& files) {
    try {
      return Apply(after);
    } catch (const CommandError& error) {
      throw CommandError(
          error.Code(),
          error.what() + std::string("; what was edited is in ") + files.Keep().string(),
          error.Name());
    }
  }

  // Why the texts cannot be the task's; empty when they are from now on.
  std::vector<std::string> Apply(const Texts& after) {
    std::vector<std::string> problems;
    if (after.m_Document != m_Before.m_Document) {
      AddDocumentProblems(m_Id, after.m_Document, problems);
    }
    if (after.m_Job != m_Before.m_Job) {
      AddJobProblems(m_Id, after.m_Job, problems);
    }
    if (!problems.empty()) {
      return problems;
    }
    try {
      Send(after);
    } catch (const CommandError& error) {
      if (error.Code() != ExitCode::Usage) {
        throw;
      }
      problems.emplace_back(error.what());
    }
    return problems;
  }

  void Send(const Texts& after) {
    const auto job = after.m_Job == m_Before.m_Job ? std::nullopt : std::optional(after.m_Job);
    if (job) {
      ThrowIfJobChanged();
    }
    if (after.m_Document == m_Before.m_Document) {
      m_Agent.PutJob(m_Id, after.m_Job);
      return;
    }
    const AsciiDocument ascii(AString::FromUtf8(after.m_Document));
    const std::string document = ascii.Text().ToUtf8();
    for (const std::string& warning :
         AddWithJob(m_Agent, {m_Id, document, job, m_Before.m_Document})) {
      m_Context.PrintWarning({{"id", m_Id}, {"message", warning}});
    }
  }

  // Another client may still change it between this and what is sent.
  void ThrowIfJobChanged() {
    if (m_Agent.JobText(m_Id).value_or("") != m_Before.m_Job) {
      throw CommandError(ExitCode::Failed, "the job of " + m_Id +
                                               " has changed since it was read; nothing was "
                                               "replaced");
    }
  }

  bool IsToBeEditedAgain(const std::vector<std::string>& problems) const {
    for (const std::string& problem : problems) {
      m_Context.m_Err << problem << '\n';
    }
    m_Context.m_Err << "edit again? [Y/n] " << std::flush;
    std::string answer;
    return std::getline(m_Context.m_In, answer) &&
           (answer.empty() || answer[0] == 'y' || answer[0] == 'Y');
  }

  void PrintWords() const {
    const TaskSource source = FindTask(m_Id, m_Context);
    const ZoneInForce zone("", source.m_Live);
    const long now = std::time(nullptr);
    const TaskPhrase said =
        SayTask(source.m_Document.m_Xml, source.m_Live, CalendarForCheck(now), now);
    m_Context.m_Out << m_Id << ": " << (said.m_Words.empty() ? "no words" : said.m_Words) << '\n';
    for (const std::string& note : said.m_Notes) {
      m_Context.m_Out << "  note       " << note << '\n';
    }
  }

  const std::string& m_Id;
  AgentApi& m_Agent;
  const CommandContext& m_Context;
  const Texts m_Before;
};

}  // namespace

void AddEditCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command(
      "edit", "Edit a task's document and job with $EDITOR; nothing changes before both are right");
  const auto id = std::make_shared<std::string>();
  command.Argument("ID", *id, "task ID").Required();
  command.OnUse([id, &context] {
    AgentApi agent = context.Agent();
    Editing(*id, agent, context).Run();
  });
}

}  // namespace NoxAgent
