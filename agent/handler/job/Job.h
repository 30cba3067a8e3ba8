#pragma once

#include "agent/handler/job/EnvironmentFile.h"
#include "agent/handler/job/ExitStatuses.h"
#include "agent/handler/job/JobError.h"
#include "agent/handler/job/Overlap.h"
#include "agent/handler/job/ProcessLimits.h"
#include "agent/handler/job/Retry.h"

#include <BaseSDK/AString.h>

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace NoxHandler {

/// What to run for a task: the content of its job file. docs/command-handler.md describes the
/// keys. Texts for the system are bytes (UTF-8).
struct Job {
  std::string m_Command;  ///< an absolute path, or a name to be found in PATH
  std::vector<std::string> m_Arguments;
  std::string m_User;       ///< empty: the agent's own
  std::string m_Directory;  ///< absolute; empty: the user's home
  mode_t m_Umask = 022;
  ProcessLimits m_Limits;
  std::string m_Input;  ///< what it reads on its standard input
  EnvironmentFile m_EnvironmentFile;
  std::map<std::string, std::string> m_Environment;  ///< counts for more than that file
  ExitStatuses m_Success{0};
  long m_TimeoutSeconds = 0;  ///< of each attempt; 0: none
  static constexpr long LeastLateSeconds = 60;
  static constexpr long MostLateSeconds = 30L * 86400;
  long m_MaxLateSeconds = 0;  ///< one that starts later than that is left out; 0: none
  static constexpr long MostSplaySeconds = 3600;
  long m_SplaySeconds = 0;  ///< the first attempt begins somewhere in this time
  OverlapRule m_Overlap = OverlapRule::Skip;
  RetryRule m_Retry;
  std::vector<std::string> m_Condition;   ///< the words of a command that says whether it may run
  std::vector<std::string> m_OnFailure;   ///< the words of a command beside the run; empty: none
  std::vector<std::string> m_OnRecovery;  ///< the same
  static constexpr long MostFailures = 1000;
  long m_After = 1;  ///< how many runs fail in a row before m_OnFailure
  BaseSDK::AString m_FileName;
  std::map<std::string, unsigned> m_Lines;  ///< where in the file the keys stand, from 1

  /// Throws JobError that names file, line and key for whatever is wrong with the text.
  static Job Parse(const BaseSDK::AString& fileName, const BaseSDK::AString& text);

  /// The same without an exception: adds everything that is wrong to `problems`, in the order of
  /// the file. A line that no INI text has is told alone.
  static Job Parse(const BaseSDK::AString& fileName, const BaseSDK::AString& text,
                   std::vector<BaseSDK::AString>& problems);

  /// Reads and parses the file. Throws JobError also when there is none, and for what
  /// TrustedFile::Read refuses.
  static Job Load(const BaseSDK::AString& fileName);

  static constexpr long BesideSeconds = 60;
  /// What runs such a command: the same as the job, but without its input, with a timeout of
  /// BesideSeconds, and without retries. REQUIRES: there is a word.
  Job Beside(const std::vector<std::string>& words) const;

  /// The error "FILE:LINE: key: reason", for a value that the machine as it is cannot serve, such
  /// as a user that does not exist. The caller throws it.
  JobError ErrorAt(const char* key, const BaseSDK::AString& reason) const;
};

}  // namespace NoxHandler
