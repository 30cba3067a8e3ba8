#pragma once

#include <BaseSDK/AString.h>

#include <chrono>
#include <cstddef>
#include <string>

namespace NoxHandler {

/// What the plug-in's configuration says. Directories are absolute and exist.
struct HandlerSettings {
  BaseSDK::AString m_JobPath;     ///< job files, "<task ID>.job"
  BaseSDK::AString m_OutputPath;  ///< outputs, "<task ID>.log"
  BaseSDK::AString m_RecordPath;  ///< records of runs under way
  BaseSDK::AString m_GroupPath;   ///< the control group that runs are put below; empty: none
  BaseSDK::AString m_SchedulerClassId;
  std::string m_MachineId;                      ///< names the machine among others; may be empty
  std::chrono::milliseconds m_KillGrace{5000};  ///< from TERM to KILL
  /// How long killed processes may take to be gone. Even to end, a process needs a processor, and
  /// on a machine that is short of everything it may get none for seconds.
  static constexpr std::chrono::seconds AfterKill{10};
  /// What a run takes while it goes on: its process, the two pipes from it and its output file. To
  /// end it takes one more for each of its processes, for a moment.
  static constexpr unsigned long DescriptorsPerRun = 4;
  std::size_t m_MaxRuns = 200;  ///< how many runs go on at the same time
  bool m_LogOutput = true;      ///< whether the output of the commands goes to the log too

  /// The path of the task's job file.
  BaseSDK::AString JobFile(const BaseSDK::AString& taskId) const {
    return BaseSDK::AString("%1/%2.job").Arg(m_JobPath, taskId);
  }
  /// The path of the file with the task's output.
  BaseSDK::AString OutputFile(const BaseSDK::AString& taskId) const {
    return BaseSDK::AString("%1/%2.log").Arg(m_OutputPath, taskId);
  }
};

}  // namespace NoxHandler
