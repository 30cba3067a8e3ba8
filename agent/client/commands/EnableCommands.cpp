// Enabling and disabling tasks, for good or for a while.
#include "agent/client/ChosenZone.h"
#include "agent/client/LocalTime.h"
#include "agent/client/TimeArgument.h"
#include "agent/client/commands/Commands.h"
#include "agent/client/commands/EachId.h"

#include <BaseSDK/ALong32.h>

#include <ctime>
#include <memory>
#include <optional>

namespace NoxAgent {

namespace {

struct DisableOptions {
  std::vector<std::string> m_Ids;
  std::string m_For;
  std::string m_Until;
};

// The scheduler gives the same answer for "no such task" and "is in that state already".
void Enable(AgentApi& agent, const std::string& id, bool enable) {
  if (agent.EnableTask(id, enable)) {
    return;
  }
  const auto report = agent.TaskAttributes(id);
  if (!report) {
    FailNotLoaded(id);
  }
  const auto enabled = report->find("t5");
  if (enabled == report->end() || (enabled->second == "1") != enable) {
    throw CommandError(ExitCode::Failed, "the task " + id +
                                             " could not be changed; see that its file can be "
                                             "written");
  }
}

// A script whose variable is empty does not mean "for good".
std::string WhyEmpty(const std::string& text) {
  return text.empty() ? "a time is to follow" : "";
}

// When the tasks come back; nothing when they do not.
std::optional<long> ReturnIn(const DisableOptions& options) {
  if (!options.m_For.empty() && !options.m_Until.empty()) {
    throw CommandError(ExitCode::Usage, "--for and --until exclude each other");
  }
  const long now = static_cast<long>(std::time(nullptr));
  if (!options.m_For.empty()) {
    return BaseSDK::Add32(now, ReadDuration("--for", options.m_For));
  }
  if (options.m_Until.empty()) {
    return std::nullopt;
  }
  const long until = ReadTime("--until", options.m_Until);
  if (until <= now) {
    throw CommandError(ExitCode::Usage, "--until " + options.m_Until + " is over already");
  }
  return until;
}

void DisableOne(AgentApi& agent, const std::string& id, std::optional<long> until) {
  if (!until) {
    return Enable(agent, id, false);
  }
  if (!agent.DisableTaskUntil(id, *until)) {
    FailNotLoaded(id);
  }
}

void PrintDisabled(const std::vector<std::string>& ids, std::optional<long> until,
                   const CommandContext& context) {
  if (context.m_Json) {
    return context.PrintJson({{"disabled", ids}, {"until", MomentOrNull(until.value_or(0))}});
  }
  const std::string local = until ? LocalTimeText(*until) : std::string();
  for (const std::string& id : ids) {
    context.m_Out << "disabled " << id << (until ? " until " + local : "") << '\n';
  }
}

void Disable(const DisableOptions& options, CommandContext& context) {
  AgentApi agent = context.Agent();
  const bool isForAWhile = !options.m_For.empty() || !options.m_Until.empty();
  // As the list tells it: in the agent's local time.
  const ChosenZone zone =
      ChosenZone::AsNamed(isForAWhile ? agent.Status().Text("zone", "") : std::string());
  const std::optional<long> until = ReturnIn(options);
  ForEachId(
      options.m_Ids, [&](const std::string& id) { DisableOne(agent, id, until); },
      [&](const std::vector<std::string>& done) { PrintDisabled(done, until, context); }, context);
}

}  // namespace

void AddEnableCommands(CommandLine& line, CommandContext& context) {
  CommandLine& enable = line.Command("enable", "Enable tasks");
  const auto ids = std::make_shared<std::vector<std::string>>();
  enable.Argument("ID", *ids, "task IDs").Required();
  enable.OnUse([ids, &context] {
    AgentApi agent = context.Agent();
    ForEachId(
        *ids, [&](const std::string& id) { Enable(agent, id, true); },
        [&](const std::vector<std::string>& done) { PrintDone(done, "enabled", context); },
        context);
  });

  CommandLine& disable = line.Command("disable", "Disable tasks, for good or for a while");
  const auto options = std::make_shared<DisableOptions>();
  disable.Argument("ID", options->m_Ids, "task IDs").Required();
  disable.Option("--for", options->m_For, "they come back after it: 90s, 10m, 2h, 3d, 1d12h")
      .Takes("DURATION")
      .Check(WhyEmpty);
  disable.Option("--until", options->m_Until, "they come back then, in the agent's local time")
      .Takes("TIME")
      .Check(WhyEmpty);
  disable.OnUse([options, &context] { Disable(*options, context); });
}

}  // namespace NoxAgent
