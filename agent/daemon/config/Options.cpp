#include "agent/daemon/config/Options.h"

#include <BaseSDK/ALogConfig.h>

#include <CLI/CLI.hpp>
#include <string>

#include "agent/daemon/AgentError.h"
#include "agent/daemon/BuildInfo.h"

using BaseSDK::ALogConfig;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* kDescription =
    "The Nox agent: loads plug-ins, among them the task scheduler, and serves them on a control "
    "socket.\nWithout a configuration file it runs the scheduler and the command handler with "
    "built-in defaults.";

std::string CheckLevel(const std::string& text) {
  ALogger::Level level{};
  return ALogConfig::ParseLevel(AString::FromUtf8(text), level)
             ? std::string()
             : "\"" + text + "\" is none of error, warning, notice, information, debug, trace";
}

}  // namespace

Options Options::Parse(int argc, const char* const* argv) {
  Options options;
  std::string config;
  std::string stateDir;
  std::string runtimeDir;
  std::string level;
  CLI::App app{kDescription, "noxagentd"};
  app.set_version_flag("--version", std::string("noxagentd ") + kVersion);
  app.add_option("--config", config, "Read this configuration file")->type_name("FILE");
  app.add_option("--state-dir", stateDir, "Keep tasks, jobs and outputs here")->type_name("DIR");
  app.add_option("--runtime-dir", runtimeDir, "Keep the control socket here")->type_name("DIR");
  app.add_option("--log-level", level,
                 "Log messages up to error, warning, notice, information, debug or trace")
      ->type_name("LEVEL")
      ->check(CheckLevel);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() != 0) {
      throw AgentError(AgentError::Kind::Usage,
                       AString("%1; see noxagentd --help").Arg(AString(error.what())));
    }
    (void)app.exit(error);
    options.m_Answered = true;
    return options;
  }
  options.m_ConfigFile = AString::FromUtf8(config);
  options.m_StateDir = AString::FromUtf8(stateDir);
  options.m_RuntimeDir = AString::FromUtf8(runtimeDir);
  ALogger::Level parsed{};
  if (ALogConfig::ParseLevel(AString::FromUtf8(level), parsed)) {
    options.m_LogLevel = parsed;
  }
  return options;
}

}  // namespace NoxAgent
