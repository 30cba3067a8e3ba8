#include "agent/client/Client.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "agent/client/commands/Commands.h"

namespace NoxAgent {

namespace {

constexpr const char* kExitCodes =
    "Exit status: 0 done, 1 the operation failed, 2 wrong arguments or a document that is "
    "refused, 3 the agent cannot be reached.";

constexpr const char* kCommandFooter =
    "The options --socket, --runtime-dir and --json: see noxctl --help.\n";

void AddGlobalOptions(CLI::App& app, CommandContext& context) {
  app.add_option("--socket", context.m_Socket, "the agent's control socket")->type_name("PATH");
  app.add_option("--runtime-dir", context.m_RuntimeDirectory,
                 "the agent's runtime directory, in which its socket lies")
      ->type_name("DIR");
  app.add_flag("--json", context.m_Json, "answer in JSON");
  app.set_version_flag("--version", "noxctl " NOX_VERSION);
}

// Errors are one line each, so that they can be searched for and mailed.
std::string OneLine(std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

// Why the command line cannot be read, and where it is explained.
std::string UsageMessage(const CLI::App& app, const CLI::ParseError& error) {
  const auto commands = app.get_subcommands();
  if (!commands.empty())
    return std::string(error.what()) + "; see noxctl " + commands.front()->get_name() + " --help";
  const auto unknown = app.remaining();
  const std::string what =
      unknown.empty() ? error.what() : "there is no command or option \"" + unknown.front() + '"';
  return what + "; see noxctl --help";
}

int Fail(const CommandContext& context, ExitCode code, const std::string& message) {
  context.m_Err << "noxctl: " << OneLine(message) << '\n';
  return static_cast<int>(code);
}

// The parser takes its arguments from the back.
void Parse(CLI::App& app, const std::vector<std::string>& arguments) {
  app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
}

}  // namespace

int RunClient(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
              std::ostream& err) {
  CommandContext context{in, out, err, {}, {}, false, ExitCode::Ok};
  CLI::App app("Client of the Nox agent.", "noxctl");
  app.require_subcommand(1);
  app.fallthrough();
  AddGlobalOptions(app, context);
  app.footer(std::string(kCommandFooter) + kExitCodes + '\n');  // of the commands: they copy it
  AddAllCommands(app, context);
  app.footer(std::string(kExitCodes) + " For check: 0 no problems, 1 warnings, 2 errors.\n");
  try {
    Parse(app, arguments);
    return static_cast<int>(context.m_ExitCode);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error, out, err);
    return Fail(context, ExitCode::Usage, UsageMessage(app, error));
  } catch (const CommandError& error) {
    return Fail(context, error.Code(), error.what());
  }
}

}  // namespace NoxAgent
