#include "agent/client/Client.h"

#include "agent/client/Completion.h"
#include "agent/client/commands/Commands.h"
#include "agent/library/PathCheck.h"

#include <algorithm>

namespace NoxAgent {

namespace {

constexpr const char* ExitCodes =
    "Exit status: 0 done, 1 the operation failed, 2 wrong arguments or a document that is "
    "refused, 3 the agent cannot be reached.";

constexpr const char* CommandFooter =
    "The options --socket, --runtime-dir and --json: see noxctl --help.\n";

void AddGlobalOptions(CommandLine& line, CommandContext& context) {
  line.Option("--socket", context.m_Socket, "the agent's control socket")
      .Takes("PATH")
      .Check(CheckPath);
  line.Option("--runtime-dir", context.m_RuntimeDirectory,
              "the agent's runtime directory, in which its socket lies")
      .Takes("DIR")
      .Check(CheckPath);
  line.Flag("--json", context.m_Json, "answer in JSON");
  line.Version("noxctl " NOX_VERSION);
}

int Fail(const CommandContext& context, const CommandError& error) {
  context.PrintError(error);
  return static_cast<int>(error.Code());
}

}  // namespace

int RunClient(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
              std::ostream& err) {
  CommandContext context{in, out, err, {}, {}, false, ExitCode::Ok};
  CommandLine line("noxctl", "Client of the Nox agent.");
  AddGlobalOptions(line, context);
  line.Footer(std::string(CommandFooter) + ExitCodes + '\n');  // of the commands: they copy it
  AddAllCommands(line, context);
  line.Footer(std::string(ExitCodes) + " For check: 0 no problems, 1 warnings, 2 errors.\n");
  if (!arguments.empty() && arguments.front() == CompletionCommand) {
    Complete(line, {arguments.begin() + 1, arguments.end()}, context);
    return static_cast<int>(ExitCode::Ok);
  }
  try {
    (void)line.Parse(arguments, out);
    if (!out.flush()) {
      throw CommandError(ExitCode::Failed,
                         "the answer could not be written; see that there is room for it");
    }
    return static_cast<int>(context.m_ExitCode);
  } catch (const CommandLineError& error) {
    // The words before the option may be those that could not be read, so it is looked for here.
    context.m_Json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    return Fail(context, {ExitCode::Usage, error.what()});
  } catch (const CommandError& error) {
    return Fail(context, error);
  } catch (const JsonError& error) {
    return Fail(context,
                {ExitCode::Failed, std::string("an answer cannot be read: ") + error.what() +
                                       "; see that noxctl and noxagentd are of the same version"});
  }
}

}  // namespace NoxAgent
