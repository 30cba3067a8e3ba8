#pragma once

#include <BaseSDK/ALogger.h>
#include <BaseSDK/AString.h>

#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// What the command line of noxagentd says.
struct Options {
  BaseSDK::AString m_ConfigFile;                      ///< empty: built-in defaults
  BaseSDK::AString m_StateDir;                        ///< empty: as configured, else the default
  BaseSDK::AString m_RuntimeDir;                      ///< likewise
  std::optional<BaseSDK::ALogger::Level> m_LogLevel;  ///< nothing: as configured

  /// --help or --version: the answer is printed, and there is no more to do.
  bool m_Answered = false;

  /// From the words behind the program's name. Prints the answer to --help and --version. Throws
  /// AgentError (Usage) when the words are wrong.
  static Options Parse(const std::vector<std::string>& words);
};

}  // namespace NoxAgent
