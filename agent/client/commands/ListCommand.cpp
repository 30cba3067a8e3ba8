#include "agent/client/ChosenZone.h"
#include "agent/client/LocalTime.h"
#include "agent/client/TaskSummary.h"
#include "agent/client/TextTable.h"
#include "agent/client/commands/Commands.h"

#include <BaseSDK/ADateTime.h>

#include <ctime>

namespace NoxAgent {

namespace {

std::vector<TaskSummary> Tasks(AgentApi& agent) {
  std::vector<TaskSummary> tasks;
  agent.ForEachTask([&](const AgentApi::ListedTask& task) {
    tasks.push_back(
        Summarize(task.m_Id, task.m_Document, task.m_Report, ReadHandlerRun(task.m_Run)));
    tasks.back().m_Returns = task.m_Returns;
  });
  return tasks;
}

std::string StateText(const TaskSummary& task) {
  if (!task.m_LastRun) {
    return "-";
  }
  if (!task.m_Recorded) {
    return "unknown";
  }
  return task.m_LastRun->m_State.empty() ? "?" : task.m_LastRun->m_State;
}

std::string LastRunText(const TaskSummary& task) {
  if (!task.m_LastRun) {
    return "never";
  }
  const long seconds = task.m_LastRun->m_Seconds;
  return seconds == -1 ? task.m_LastRun->m_Start : LocalTimeText(seconds);
}

std::string NextRunText(const TaskSummary& task, long now) {
  if (!task.m_Loaded) {
    return "not loaded yet";
  }
  if (task.m_NextRun <= 0) {
    return "-";
  }
  return task.m_NextRun <= now ? "due" : LocalTimeText(task.m_NextRun);
}

const char* YesOrNo(bool value) {
  return value ? "yes" : "no";
}

std::string EnabledText(const TaskSummary& task) {
  if (task.m_Returns <= 0) {
    return YesOrNo(task.m_Enabled);
  }
  return BaseSDK::ADateTime(task.m_Returns).ToString("until %Y-%m-%d %H:%M").ToUtf8();
}

Json ToJson(const TaskSummary& task) {
  Json state, lastRun;
  if (task.m_LastRun) {
    state = task.m_Recorded ? Json(task.m_LastRun->m_State) : Json();
    lastRun = MomentOrNull(task.m_LastRun->m_Seconds);
  }
  return {{"id", task.m_Id},
          {"enabled", task.m_Enabled},
          {"state", state},
          {"lastRun", lastRun},
          {"recorded", task.m_Recorded},
          {"nextRun", MomentOrNull(task.m_NextRun)},
          {"late", task.m_Late},
          {"loaded", task.m_Loaded},
          {"returns", MomentOrNull(task.m_Returns)}};
}

void PrintTable(const std::vector<TaskSummary>& tasks, std::ostream& out) {
  const long now = std::time(nullptr);
  TextTable table({"ID", "ENABLED", "STATE", "LAST RUN", "NEXT RUN", "LATE"});
  for (const TaskSummary& task : tasks) {
    table.AddRow({task.m_Id, EnabledText(task), StateText(task), LastRunText(task),
                  NextRunText(task, now), YesOrNo(task.m_Late)});
  }
  table.Print(out);
}

void WarnOfLostRecords(const std::vector<TaskSummary>& tasks, const CommandContext& context) {
  for (const TaskSummary& task : tasks) {
    if (!task.m_Recorded) {
      context.PrintWarning({{"id", task.m_Id},
                            {"message", "the last run of the task " + task.m_Id +
                                            " could not be written into its file; see that the "
                                            "task directory can be written and has room"}});
    }
  }
}

// Not on the stream of the table: scripts take each of its lines for a task.
void WarnOfFiles(AgentApi& agent, const CommandContext& context) {
  const auto files = agent.FilesThatAreNoTasks();
  if (files.empty()) {
    return;
  }
  const auto& [name, reason] = files.front();
  const std::string first = name + (reason.empty() ? "" : " (" + reason + ")");
  const std::string text =
      files.size() == 1 ? "the file " + first + " is no task"
                        : std::to_string(files.size()) + " files are no tasks, such as " + first;
  std::vector<std::string> names;
  for (const auto& file : files) {
    names.push_back(file.first);
  }
  context.PrintWarning({{"files", names}, {"message", text + "; see noxctl files"}});
}

void List(const CommandContext& context) {
  AgentApi agent = context.Agent();
  // The documents hold local times of the agent's.
  const ChosenZone zone = ChosenZone::AsNamed(agent.Status().Text("zone", ""));
  const std::vector<TaskSummary> tasks = Tasks(agent);
  WarnOfLostRecords(tasks, context);
  WarnOfFiles(agent, context);
  if (!context.m_Json) {
    return PrintTable(tasks, context.m_Out);
  }
  Json list = Json::List{};
  for (const TaskSummary& task : tasks) {
    list.Append(ToJson(task));
  }
  context.PrintJson(list);
}

}  // namespace

void AddListCommand(CommandLine& line, CommandContext& context) {
  CommandLine& command = line.Command("list", "List the tasks, with their last and next runs");
  command.OnUse([&context] { List(context); });
}

}  // namespace NoxAgent
