// Commands about the agent itself.
#include "agent/client/StatusText.h"
#include "agent/client/commands/Commands.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>

namespace NoxAgent {

namespace {

void Done(const char* what, const CommandContext& context) {
  if (context.m_Json) {
    return context.PrintJson({{"done", what}});
  }
  context.m_Out << what << " done\n";
}

void Status(bool withTasks, const CommandContext& context) {
  const Json status = context.Agent().Status(withTasks);
  if (context.m_Json) {
    return context.PrintJson(status);
  }
  context.m_Out << StatusText(status);
}

void Refresh(const CommandContext& context) {
  const Json answer = context.Agent().Refresh();
  if (context.m_Json) {
    return context.PrintJson({{"done", "refresh"}, {"notInEffect", answer.Items("notInEffect")}});
  }
  context.m_Out << "refresh done\n";
  for (const Json& change : answer.Items("notInEffect")) {
    context.m_Out << "takes effect at the next start: " << change.Text("setting", "") << " from \""
                  << change.Text("old", "") << "\" to \"" << change.Text("new", "") << "\"\n";
  }
}

constexpr long Event = 10;
constexpr const char* Kinds =
    "0 start-up finished, 1 and 2 policy refresh started and finished, 4 and 5 registration of a "
    "plug-in started and finished, 6 and 7 its unregistration, 10 event CODE";

bool IsKind(long kind) {
  constexpr long Known[] = {0, 1, 2, 4, 5, 6, 7, Event};
  return std::find(std::begin(Known), std::end(Known), kind) != std::end(Known);
}

struct NotifyOptions {
  long m_Kind = 0;
  std::optional<long> m_Code;
  std::string m_Text;
};

void Notify(const NotifyOptions& options, const CommandContext& context) {
  if (!IsKind(options.m_Kind)) {
    throw CommandError(ExitCode::Usage, "there is no notification of kind " +
                                            std::to_string(options.m_Kind) + "; the kinds are " +
                                            Kinds);
  }
  if (options.m_Kind == Event && !options.m_Code) {
    throw CommandError(ExitCode::Usage, "an event (10) has a CODE; see noxctl notify --help");
  }
  context.Agent().Notify(options.m_Kind, options.m_Code.value_or(0), options.m_Text);
  Done("notify", context);
}

}  // namespace

void AddAgentCommands(CommandLine& line, CommandContext& context) {
  CommandLine& status = line.Command("status", "Print how the agent and its plug-ins are");
  const auto withTasks = std::make_shared<bool>(false);
  status.Flag("--tasks", *withTasks, "list all tasks that the scheduler has in memory");
  status.OnUse([withTasks, &context] { Status(*withTasks, context); });

  CommandLine& refresh =
      line.Command("refresh", "Have the agent read its configuration again (a policy refresh)");
  refresh.OnUse([&context] { Refresh(context); });

  CommandLine& notify = line.Command("notify", "Send a notification to all plug-ins");
  const auto options = std::make_shared<NotifyOptions>();
  notify.Argument("KIND", options->m_Kind, Kinds).Required();
  notify.Argument("CODE", options->m_Code, "the event's number, such as 300 or 302");
  notify.Argument("TEXT", options->m_Text, "the plug-in's name, or the event's data");
  notify.OnUse([options, &context] { Notify(*options, context); });
}

}  // namespace NoxAgent
