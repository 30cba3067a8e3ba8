#include "agent/client/DocumentFile.h"
#include "agent/client/commands/Commands.h"
#include "agent/document/AsciiDocument.h"
#include "agent/document/TaskDocumentCheck.h"
#include "agent/document/TaskId.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <map>
#include <memory>

namespace NoxAgent {

namespace {

using NewTasks = std::vector<AgentApi::NewTask>;

constexpr const char* StandardInput = "-";

struct AddOptions {
  std::vector<std::string> m_Files;
  std::string m_Id;
  bool m_Force = false;

  bool AreMany() const { return m_Files.size() > 1; }
};

bool Prevents(const TaskDocumentProblem& problem, bool force) {
  return problem.m_Severity == TaskDocumentSeverity::Error ||
         (problem.m_Severity == TaskDocumentSeverity::NeverRuns && !force);
}

CommandError::Place PlaceOf(const TaskDocumentProblem& problem) {
  return {static_cast<long>(problem.m_Line), static_cast<long>(problem.m_Column)};
}

// What a task from one of several files is called. Standard input has no name: the agent invents
// one.
std::string IdOfFile(const std::string& file) {
  if (file == StandardInput) {
    return {};
  }
  const auto name = std::filesystem::path(file).filename();
  const bool isDocument = name.extension() == ".vsk" || name.extension() == ".xml";
  const std::string id = isDocument ? name.stem() : name;
  const BaseSDK::AString fault = FaultOfTaskId(BaseSDK::AString::FromUtf8(id), ".vsk");
  if (!fault.IsEmpty()) {
    throw CommandError(ExitCode::Usage,
                       file + ": its task would have the ID \"" + id + "\", which " +
                           fault.ToUtf8() + "; rename the file, or add it alone with --id",
                       "bad-task-id");
  }
  return id;
}

std::vector<std::string> IdsOfFiles(const std::vector<std::string>& files) {
  std::map<std::string, std::string> fileOf;
  std::vector<std::string> ids;
  for (const std::string& file : files) {
    const std::string& id = ids.emplace_back(IdOfFile(file));
    const auto [other, isNew] = fileOf.emplace(id, file);
    if (isNew) {
      continue;
    }
    if (file == StandardInput) {
      throw CommandError(ExitCode::Usage, "standard input is named twice; it can be read once");
    }
    throw CommandError(ExitCode::Usage,
                       file + ": its task would have the ID " + id + ", and so would that of " +
                           other->second + "; rename one of the files, or add it alone with --id",
                       "duplicate-task-id");
  }
  return ids;
}

std::vector<std::string> IdsFor(const AddOptions& options) {
  if (!options.AreMany()) {
    return {options.m_Id};
  }
  if (!options.m_Id.empty()) {
    throw CommandError(ExitCode::Usage,
                       "--id is for one FILE; with several, each task is called as its file; see "
                       "noxctl add --help");
  }
  return IdsOfFiles(options.m_Files);
}

// Reads documents and checks them. The agent would say the same; asked here, the answer names the
// file and needs no agent.
class CheckedDocuments {
 public:
  CheckedDocuments(bool force, const CommandContext& context)
      : m_Force(force), m_Context(context) {}

  // In ASCII.
  std::string Read(const std::string& file) {
    const BaseSDK::AString xml = ReadDocument(file, m_Context.m_In);
    const auto problems = CheckTaskDocument(xml, m_Now, &m_Calendar);
    for (const TaskDocumentProblem& problem : problems) {
      ThrowIfPrevented(file, problem);
    }
    for (const TaskDocumentProblem& problem : problems) {
      m_Warnings.push_back(
          {{"message", file + ": " + DescribeTaskDocumentProblem(problem).ToUtf8()},
           {"line", problem.m_Line},
           {"column", problem.m_Column}});
    }
    return AsciiDocument(xml).Text().ToUtf8();
  }

  void PrintWarnings() const {
    for (const Json& warning : m_Warnings) {
      m_Context.PrintWarning(warning);
    }
  }

 private:
  void ThrowIfPrevented(const std::string& file, const TaskDocumentProblem& problem) const {
    if (!Prevents(problem, m_Force)) {
      return;
    }
    const bool canForce = problem.m_Severity == TaskDocumentSeverity::NeverRuns;
    throw CommandError(ExitCode::Usage,
                       file + ": " + DescribeTaskDocumentProblem(problem).ToUtf8() +
                           (canForce ? " (--force adds it nevertheless)" : ""),
                       canForce ? "never-runs" : "bad-document", PlaceOf(problem));
  }

  const bool m_Force;
  const CommandContext& m_Context;
  const long m_Now = std::time(nullptr);
  const LocalCalendar m_Calendar = CalendarForCheck(m_Now);
  Json::List m_Warnings;
};

NewTasks ReadTasks(const AddOptions& options, const CommandContext& context) {
  NewTasks tasks;
  for (std::string& id : IdsFor(options)) {
    tasks.push_back({std::move(id), {}});
  }
  CheckedDocuments documents(options.m_Force, context);
  for (std::size_t index = 0; index < tasks.size(); ++index) {
    tasks[index].m_Xml = documents.Read(options.m_Files[index]);
  }
  documents.PrintWarnings();
  return tasks;
}

// Tells what becomes of the tasks.
class AddReport {
 public:
  AddReport(const AddOptions& options, CommandContext& context)
      : m_Options(options), m_Context(context) {}

  void Take(std::size_t index, const AgentApi::AddedTask& task) {
    for (const std::string& warning : task.m_JobWarnings) {
      m_Context.PrintWarning({{"id", task.m_Id}, {"message", Beginning(index) + warning}});
    }
    m_Added.push_back(task.m_Id);
    if (!m_Context.m_Json) {
      m_Context.m_Out << task.m_Id << '\n' << std::flush;
    }
  }

  // An error about one of the files.
  void Fail(const CommandError& error, std::size_t index, const std::string& id,
            const std::string& more = {}) {
    if (!m_Options.AreMany()) {
      throw error;
    }
    m_Context.PrintError(
        {error.Code(), Beginning(index) + error.what() + more, error.Name(), error.InDocument()},
        id);
    m_Context.m_ExitCode = std::max(m_Context.m_ExitCode, error.Code());
  }

  void Refuse(const TaskRefusal& refusal, const std::string& id) {
    Fail(refusal, refusal.Index(), id,
         m_Added.empty() ? "; none of the tasks was added" : "; only the tasks told of were added");
  }

  // Once nothing more is added.
  void End() const {
    if (!m_Context.m_Json) {
      return;
    }
    if (m_Options.AreMany()) {
      m_Context.PrintJson({{"added", m_Added}});
    } else if (!m_Added.empty()) {
      m_Context.PrintJson({{"id", m_Added.front()}});
    }
  }

 private:
  // What a message about one of several files begins with.
  std::string Beginning(std::size_t index) const {
    return m_Options.AreMany() ? m_Options.m_Files[index] + ": " : std::string();
  }

  const AddOptions& m_Options;
  CommandContext& m_Context;
  std::vector<std::string> m_Added;
};

void Add(const AddOptions& options, CommandContext& context) {
  const NewTasks tasks = ReadTasks(options, context);
  AgentApi agent = context.Agent();
  AddReport report(options, context);
  try {
    agent.AddTasks(tasks, options.m_Force, [&](std::size_t index, const AgentApi::AddedTask& task) {
      if (task.m_Error) {
        report.Fail(*task.m_Error, index, tasks[index].m_Id);
      } else {
        report.Take(index, task);
      }
    });
  } catch (const TaskRefusal& refusal) {
    report.Refuse(refusal, tasks.at(refusal.Index()).m_Id);
  } catch (...) {
    report.End();
    throw;
  }
  report.End();
}

}  // namespace

void AddAddCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command =
      line.Command("add", "Add tasks, or replace the documents of existing ones; prints their IDs");
  const auto options = std::make_shared<AddOptions>();
  command
      .Argument("FILE", options->m_Files,
                "task documents, - for standard input; with several, each task is called as its "
                "file, without directory and .vsk or .xml")
      .Required();
  command.Option("--id", options->m_Id, "the task's ID, with one FILE (default: one is invented)")
      .Takes("ID");
  command.Flag("--force", options->m_Force, "add tasks even if they never run");
  command.OnUse([options, &context] { Add(*options, context); });
}

}  // namespace NoxAgent
