#include "agent/client/CrontabImport.h"
#include "agent/client/DocumentFile.h"
#include "agent/client/ImportReport.h"
#include "agent/client/ZoneInForce.h"
#include "agent/client/commands/Commands.h"
#include "agent/document/TaskDocumentCheck.h"

#include <BaseSDK/AString.h>

#include <ctime>
#include <filesystem>
#include <memory>

namespace NoxAgent {

namespace {

constexpr const char* NotAllowed = "not-allowed";

struct ImportOptions {
  std::string m_Format, m_File, m_User;
  bool m_System = false, m_Enable = false, m_DryRun = false;
};

// Whether the file's place says that it has a column of users.
bool IsSystemFile(const std::filesystem::path& file) {
  return file == "/etc/crontab" || file.parent_path().filename() == "cron.d";
}

CrontabOrigin OriginOf(const ImportOptions& options, const std::string& zone) {
  const std::filesystem::path file = options.m_File;
  CrontabOrigin origin;
  origin.m_HasUserColumn = options.m_System || IsSystemFile(file);
  origin.m_User = options.m_User;
  if (origin.m_User.empty() && file.parent_path().filename() == "crontabs") {
    origin.m_User = file.filename().string();
  }
  origin.m_Zone = zone;
  return origin;
}

class Import {
 public:
  Import(const ImportOptions& options, CommandContext& context)
      : m_Options(options), m_Context(context), m_Agent(context.Agent()) {}

  void Run() {
    const std::string text = ReadDocument(m_Options.m_File, m_Context.m_In).ToUtf8();
    const auto live = ReadAgentsZone(m_Agent, m_Options.m_DryRun);
    const ZoneInForce zone("", live);
    const long now = std::time(nullptr);
    ImportPlan plan;
    plan.m_Origin = OriginOf(m_Options, live ? live->m_ZoneName : ClientsZoneName());
    plan.m_Enable = m_Options.m_Enable;
    if (live) {
      const auto ids = m_Agent.TaskIds();
      plan.m_Taken = {ids.begin(), ids.end()};
    }
    plan.m_JobOf = [this](const std::string& id) { return JobOf(id); };
    m_Lines = ImportCrontab(text, plan, CalendarForCheck(now), now);
    if (!m_Options.m_DryRun) {
      AddTasks();
    }
    Tell(zone.Note());
  }

 private:
  std::optional<std::string> JobOf(const std::string& id) {
    try {
      return m_Agent.JobText(id);
    } catch (const CommandError& error) {
      if (error.Name() == NotAllowed) {
        return std::nullopt;
      }
      throw;
    }
  }

  void AddTasks() {
    for (ImportedLine& line : m_Lines) {
      const auto* const task = std::get_if<ImportedTask>(&line.m_Content);
      if (task == nullptr || task->m_IsThere) {
        continue;
      }
      try {
        for (const std::string& warning : AddWithJob(m_Agent, task->m_Task)) {
          m_Context.PrintWarning({{"id", task->m_Task.m_Id}, {"message", warning}});
        }
      } catch (const CommandError& error) {
        if (error.Code() == ExitCode::Unreachable || error.Name() == NotAllowed) {
          throw;
        }
        line.m_Content = CronRefusal{error.what(), ""};
      }
    }
  }

  void Tell(const std::string& zoneNote) const {
    const ImportReport report(m_Lines, m_Options.m_DryRun, m_Options.m_Enable);
    m_Context.m_ExitCode = report.HasRefusals() ? ExitCode::Failed : ExitCode::Ok;
    if (m_Context.m_Json) {
      return m_Context.PrintJson(report.ToJson());
    }
    report.Print(m_Context.m_Out);
    if (!zoneNote.empty()) {
      m_Context.m_Out << zoneNote << '\n';
    }
  }

  const ImportOptions& m_Options;
  CommandContext& m_Context;
  AgentApi m_Agent;
  std::vector<ImportedLine> m_Lines;
};

}  // namespace

void AddImportCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command(
      "import",
      "Make tasks and jobs of a crontab's lines, with the proof that they run as it says");
  command.Explain(
      "A file of /etc/cron.d, and /etc/crontab, have a column of users; --system says so of "
      "others.\n"
      "The tasks are added disabled unless --enable is given. Exit status 1 when a line is "
      "refused.");
  const auto options = std::make_shared<ImportOptions>();
  command.Argument("FORMAT", options->m_Format, "crontab")
      .Required()
      .Check([](const std::string& format) {
        return format == "crontab" ? "" : "\"" + format + "\" cannot be imported; crontab can";
      });
  command.Argument("FILE", options->m_File, "the crontab, - for standard input").Required();
  command.Flag("--system", options->m_System, "each line names its user");
  command.Option("--user", options->m_User, "whose crontab it is (default: the agent's user)")
      .Takes("USER");
  command.Flag("--enable", options->m_Enable, "have the tasks run");
  command.Flag("--dry-run", options->m_DryRun, "add nothing");
  command.OnUse([options, &context] { Import(*options, context).Run(); });
}

}  // namespace NoxAgent
