#include "agent/daemon/config/Options.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/BuildInfo.h"
#include "agent/library/CommandLine.h"
#include "agent/library/PathCheck.h"

#include <BaseSDK/ALogConfig.h>

#include <iostream>

using BaseSDK::ALogConfig;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* Description =
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

Options Options::Parse(const std::vector<std::string>& words) {
  Options options;
  std::string config;
  std::string stateDir;
  std::string runtimeDir;
  std::string level;
  CommandLine line("noxagentd", Description);
  line.Version(std::string("noxagentd ") + AgentVersion);
  line.Option("--config", config, "Read this configuration file").Takes("FILE").Check(CheckPath);
  line.Option("--state-dir", stateDir, "Keep tasks, jobs and outputs here")
      .Takes("DIR")
      .Check(CheckPath);
  line.Option("--runtime-dir", runtimeDir, "Keep the control socket here")
      .Takes("DIR")
      .Check(CheckPath);
  line.Option("--log-level", level,
              "Log messages up to error, warning, notice, information, debug or trace")
      .Takes("LEVEL")
      .Check(CheckLevel);
  try {
    if (!line.Parse(words, std::cout)) {
      options.m_Answered = true;
      return options;
    }
  } catch (const CommandLineError& error) {
    throw AgentError(AgentError::Kind::Usage, AString(error.what()));
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
