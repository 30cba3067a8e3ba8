#pragma once

#include "agent/handler/job/Job.h"
#include "agent/handler/process/Account.h"
#include "agent/handler/task/TaskBatch.h"

#include <BaseSDK/AString.h>

#include <string>
#include <vector>

namespace NoxHandler {

/// All that a new process needs, gathered before the fork: between fork and exec nothing may be
/// looked up or allocated.
struct Launch {
  Account m_Account;
  std::vector<std::string> m_Candidates;   ///< paths of the program; the first that exists is taken
  std::vector<std::string> m_Arguments;    ///< argv, the command's name first
  std::vector<std::string> m_Environment;  ///< "NAME=value"
  std::string m_Input;                     ///< what standard input yields
  mode_t m_Umask;
  ProcessLimits m_Limits;
  std::string m_Directory;
  bool m_MustEnterDirectory = false;  ///< else the root directory will do in its place

  /// The environment is the user's (HOME, USER, LOGNAME, SHELL), PATH and LANG with fixed values,
  /// the agent's TZ when the administrator set one, NOX_TASK_ID, NOX_LATE ("0" or "1"), NOX_RUN_ID
  /// with the given token, NOX_ATTEMPT with the number of the attempt, from 1, and what the job
  /// sets, in its file of variables or itself. Nothing else of the agent's environment gets
  /// through, so a job finds the same, in whatever way the agent was started. Throws JobError when
  /// the job's user or its file of variables cannot be had.
  Launch(const Job& job, const TaskBatch::Entry& entry, const std::string& token, unsigned attempt);
};

}  // namespace NoxHandler
