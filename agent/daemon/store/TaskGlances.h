#pragma once

#include "agent/daemon/store/FileIdentity.h"
#include "agent/document/TaskGlance.h"

#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>

#include <map>
#include <optional>
#include <vector>

namespace NoxAgent {

/// What was found in task files when they were read last, so that a list of all tasks reads only
/// those that have changed since. [any thread]
class TaskGlances {
 public:
  /// What the task's file says; nothing when it was not read in this condition.
  std::optional<TaskGlance> Find(const BaseSDK::AString& taskId, const FileIdentity& identity) const
      NOX_EXCLUDES(m_Lock);
  /// The file was read after `now`, in this condition or a later one. Nothing is kept of a file
  /// that has changed so recently that another change might not show.
  void Keep(const BaseSDK::AString& taskId, const FileIdentity& identity, const TaskGlance& glance,
            long now) NOX_EXCLUDES(m_Lock);
  /// These are all the tasks that there are, in order: forgets others.
  void ForgetAllBut(const std::vector<BaseSDK::AString>& taskIds) NOX_EXCLUDES(m_Lock);

 private:
  struct Entry {
    FileIdentity m_Identity;
    TaskGlance m_Glance;
  };

  mutable BaseSDK::AMutex m_Lock;
  std::map<BaseSDK::AString, Entry> m_Entries NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
