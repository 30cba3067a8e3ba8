// Commands about the agent itself.
#include <memory>
#include <optional>

#include "agent/client/StatusText.h"
#include "agent/client/commands/Commands.h"

namespace NoxAgent {

using nlohmann::json;

namespace {

void Done(const char* what, const CommandContext& context) {
  if (context.m_Json) return context.PrintJson({{"done", what}});
  context.m_Out << what << " done\n";
}

void Status(const CommandContext& context) {
  const json status = context.Agent().Status();
  if (context.m_Json) return context.PrintJson(status);
  context.m_Out << StatusText(status);
}

constexpr long kEvent = 10;

struct NotifyOptions {
  long m_Kind = 0;
  std::optional<long> m_Code;
  std::string m_Text;
};

void Notify(const NotifyOptions& options, const CommandContext& context) {
  if (options.m_Kind == kEvent && !options.m_Code)
    throw CommandError(ExitCode::Usage, "an event (10) has a CODE; see noxctl notify --help");
  context.Agent().Notify(options.m_Kind, options.m_Code.value_or(0), options.m_Text);
  Done("notify", context);
}

}  // namespace

void AddAgentCommands(CLI::App& app, CommandContext& context) {
  CLI::App* status = app.add_subcommand("status", "Print how the agent and its plug-ins are");
  status->callback([&context] { Status(context); });

  CLI::App* refresh = app.add_subcommand(
      "refresh", "Have the agent read its configuration again (a policy refresh)");
  refresh->callback([&context] {
    context.Agent().Refresh();
    Done("refresh", context);
  });

  CLI::App* notify = app.add_subcommand("notify", "Send a notification to all plug-ins");
  const auto options = std::make_shared<NotifyOptions>();
  notify
      ->add_option("KIND", options->m_Kind,
                   "0 start-up finished, 1 and 2 policy refresh started and finished, 4 and 5 "
                   "registration of a plug-in started and finished, 6 and 7 its unregistration, "
                   "10 event CODE")
      ->required()
      ->type_name("");
  notify->add_option("CODE", options->m_Code, "the event's number, such as 300 or 302")
      ->type_name("");
  notify->add_option("TEXT", options->m_Text, "the plug-in's name, or the event's data")
      ->type_name("");
  notify->callback([options, &context] { Notify(*options, context); });
}

}  // namespace NoxAgent
