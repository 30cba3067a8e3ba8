// Commands that take the IDs of stored tasks.
#include "agent/client/LocalTime.h"
#include "agent/client/TextTable.h"
#include "agent/client/commands/Commands.h"
#include "agent/client/commands/EachId.h"

#include <BaseSDK/AString.h>

#include <functional>
#include <memory>

namespace NoxAgent {

namespace {

using Report = std::map<std::string, std::string>;

[[noreturn]] void FailUnknown(const std::string& id) {
  throw CommandError(ExitCode::Failed, "there is no task " + id + "; noxctl list shows the tasks");
}

void Show(const std::string& id, const CommandContext& context) {
  AgentApi agent = context.Agent();
  const auto xml = agent.TaskXml(id);
  if (!xml) {
    FailUnknown(id);
  }
  if (!context.m_Json) {
    context.m_Out << *xml << '\n';
    return;
  }
  const auto report = agent.TaskAttributes(id);
  context.PrintJson(
      {{"id", id}, {"document", *xml}, {"attributes", report ? Json(*report) : Json()}});
}

std::string TimeText(const std::string& seconds) {
  const long value = BaseSDK::AString::FromUtf8(seconds).ToLong(10);
  return value > 0 ? LocalTimeText(value) : "never";
}

std::string FlagText(const std::string& flag) {
  return flag == "1" ? "yes" : "no";
}

std::string PlainText(const std::string& text) {
  return text;
}

std::string TriggerRunText(const std::string& run) {
  if (run == "1" || run == "2") {
    return "at an event";
  }
  return TimeText(run);
}

struct Meaning {
  const char* m_Key;
  const char* m_Name;
  std::string (*m_Value)(const std::string&);
};

constexpr Meaning Meanings[] = {{"t0", "task ID", PlainText},
                                {"t1", "handler", PlainText},
                                {"t2", "late", FlagText},
                                {"t3", "last run", TimeText},
                                {"t5", "enabled", FlagText},
                                {"t6", "next run", TimeText},
                                {"t7", "runs at event 300", FlagText},
                                {"t8", "runs at event 302", FlagText},
                                {"td", "trigger", PlainText},
                                {"tr", "next run of trigger", TriggerRunText}};

// "td3" is the description of the fourth trigger.
bool Matches(const std::string& key, const std::string& pattern) {
  const bool numbered = key.size() > 2 && key.compare(0, 2, pattern) == 0;
  return key == pattern || numbered;
}

std::vector<std::string> AttributeRow(const std::string& key, const std::string& value) {
  for (const Meaning& meaning : Meanings) {
    if (!Matches(key, meaning.m_Key)) {
      continue;
    }
    const std::string number = key.size() > 2 ? " " + key.substr(2) : "";
    return {key, meaning.m_Name + number, meaning.m_Value(value)};
  }
  return {key, "", value};
}

void Attributes(const std::string& id, const CommandContext& context) {
  const auto report = context.Agent().TaskAttributes(id);
  if (!report) {
    FailNotLoaded(id);
  }
  if (context.m_Json) {
    return context.PrintJson(*report);
  }
  TextTable table({"KEY", "MEANING", "VALUE"});
  for (const auto& [key, value] : *report) {
    table.AddRow(AttributeRow(key, value));
  }
  table.Print(context.m_Out);
}

// The task goes first: without its job it would fail when it is due meanwhile.
void Delete(AgentApi& agent, const std::string& id, bool keepsJob, const CommandContext& context) {
  if (!agent.DeleteTask(id)) {
    FailUnknown(id);
  }
  if (keepsJob) {
    return;
  }
  try {
    (void)agent.DeleteJob(id);
  } catch (const CommandError& error) {
    context.PrintWarning(
        {{"id", id},
         {"message", "the task is deleted, its job is not: " + std::string(error.what())}});
  }
}

void SetState(const std::string& id, const std::string& state, const CommandContext& context) {
  if (!context.Agent().SetRunState(id, state)) {
    FailNotLoaded(id);
  }
  if (context.m_Json) {
    return context.PrintJson({{"id", id}, {"state", state}});
  }
  context.m_Out << id << ' ' << state << '\n';
}

void AddOneCommand(CommandLine& line, const char* name, const char* summary,
                   std::function<void(const std::string&)> run) {
  CommandLine& command = line.Command(name, summary);
  const auto id = std::make_shared<std::string>();
  command.Argument("ID", *id, "task ID").Required();
  command.OnUse([id, run = std::move(run)] { run(*id); });
}

}  // namespace

void AddTaskCommands(CommandLine& line, CommandContext& context) {
  AddOneCommand(line, "show", "Print a task's document",
                [&context](const std::string& id) { Show(id, context); });
  CommandLine& deletion = line.Command("delete", "Delete tasks with their jobs");
  const auto ids = std::make_shared<std::vector<std::string>>();
  const auto keepsJob = std::make_shared<bool>(false);
  deletion.Argument("ID", *ids, "task IDs").Required();
  deletion.Flag("--keep-job", *keepsJob, "leave the job files where they are");
  deletion.OnUse([ids, keepsJob, &context] {
    AgentApi agent = context.Agent();
    ForEachId(
        *ids, [&](const std::string& id) { Delete(agent, id, *keepsJob, context); },
        [&](const std::vector<std::string>& done) { PrintDone(done, "deleted", context); },
        context);
  });
  AddOneCommand(line, "attributes", "Print what the scheduler reports on a task",
                [&context](const std::string& id) { Attributes(id, context); });

  CommandLine& setState =
      line.Command("set-state", "Record how the last run of a task went, in one word");
  const auto id = std::make_shared<std::string>();
  const auto state = std::make_shared<std::string>();
  setState.Argument("ID", *id, "task ID").Required();
  setState.Argument("STATE", *state, "Ok for a finished run, or another word").Required();
  setState.OnUse([id, state, &context] { SetState(*id, *state, context); });
}

}  // namespace NoxAgent
