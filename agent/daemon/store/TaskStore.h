#pragma once

#include "agent/daemon/journal/JournalFollower.h"
#include "agent/daemon/journal/JournaledFiles.h"
#include "agent/daemon/store/SparingFileSystem.h"
#include "agent/daemon/store/StoreFileSystem.h"

#include <BaseSDK/AString.h>

#include <memory>

namespace NoxAgent {

/// The agent's part in the task files. While it lives, it stands between the scheduler and the disk
/// (see StoreFileSystem and JournaledFiles). It must outlive every plug-in.
class TaskStore {
 public:
  /// Puts itself in front of the file system in force. [main thread]
  TaskStore();
  TaskStore(const TaskStore&) = delete;
  TaskStore& operator=(const TaskStore&) = delete;
  ~TaskStore();

  /// Which task files to look after.
  struct Tasks {
    BaseSDK::AString m_Scheduler;  ///< the name of the plug-in that they belong to
    BaseSDK::AString m_Directory;
    BaseSDK::AString m_Extension;
    BaseSDK::AString m_RefusedPath;  ///< where refused documents go
    BaseSDK::AString m_JournalPath;  ///< what is to be made safe is written there first
  };
  /// Looks after these task files from now on. Call it before the scheduler is loaded. Only the
  /// first directory is guarded; another one is logged. Throws AgentError when the directory cannot
  /// be read. [main thread]
  void Guard(const Tasks& tasks);

  /// The guarded files; null without a scheduler. [any thread, once plug-ins are loaded]
  StoreFileSystem* Files() const { return m_Files.get(); }
  /// What became of their changes; zeros without a scheduler. [as Files]
  JournaledFiles::Counts Counts() const;
  /// The name of the plug-in that the files belong to; empty without one.
  const BaseSDK::AString& Scheduler() const { return m_Scheduler; }

 private:
  BaseSDK::AFileSystem* m_Before = nullptr;
  SparingFileSystem m_Spared;
  std::unique_ptr<JournaledFiles> m_Journaled;
  std::unique_ptr<StoreFileSystem> m_Files;
  std::unique_ptr<JournalFollower> m_Follower;
  BaseSDK::AString m_Scheduler;
};

}  // namespace NoxAgent
