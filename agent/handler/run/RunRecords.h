#pragma once

#include <BaseSDK/AString.h>

#include <sys/types.h>

#include <string>
#include <vector>

namespace NoxHandler {

/// What is noted on disk about a run for as long as it goes on, so that an agent that comes after
/// one that was killed finds the processes which that one left running.
struct RunRecord {
  pid_t m_Pid = 0;  ///< of the command, which is also its session and process group
  unsigned long long m_StartTicks = 0;
  std::string m_BootId;
  std::string m_Token;  ///< value of the variable NOX_RUN_ID that the run's processes were given
};

/// The records of one agent, one file per task in a directory of their own. They have to outlive
/// the agent, not the machine: a boot ends the processes too, so nothing is flushed to disk.
class RunRecords {
 public:
  /// `directory` exists and is written by this agent alone.
  explicit RunRecords(const BaseSDK::AString& directory) : m_Directory(directory) {}

  /// 0, or an errno: the record is not there then.
  int Write(const BaseSDK::AString& taskId, const RunRecord& record) const;
  void Remove(const BaseSDK::AString& taskId) const;

  struct Named {
    BaseSDK::AString m_TaskId;
    RunRecord m_Record;
  };
  /// All that can be read; what cannot is logged and deleted.
  std::vector<Named> All() const;

 private:
  BaseSDK::AString FileName(const BaseSDK::AString& taskId) const;

  const BaseSDK::AString m_Directory;
};

}  // namespace NoxHandler
