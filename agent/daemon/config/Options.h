// What the command line of noxagentd says.
#pragma once

#include <BaseSDK/ALogger.h>
#include <BaseSDK/AString.h>

#include <optional>

namespace NoxAgent {

struct Options {
  BaseSDK::AString m_ConfigFile;  // empty: built-in defaults
  BaseSDK::AString m_StateDir;    // empty: as configured, else the default; so with the next
  BaseSDK::AString m_RuntimeDir;
  std::optional<BaseSDK::ALogger::Level> m_LogLevel;

  // --help or --version: the answer is printed, and there is no more to do.
  bool m_Answered = false;

  // Throws an AgentError when the command line is wrong.
  static Options Parse(int argc, const char* const* argv);
};

}  // namespace NoxAgent
