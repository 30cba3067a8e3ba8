#pragma once

#include "agent/daemon/store/SparingFileSystem.h"
#include "agent/daemon/store/StoreFileSystem.h"

#include <BaseSDK/AString.h>

#include <memory>
#include <optional>

namespace NoxAgent {

/// The agent's part in the task files: it puts itself between the scheduler and the disk (see
/// StoreFileSystem) for as long as it lives, which is longer than any plug-in does.
class TaskStore {
 public:
  /// In force from now on, in front of the file system that was in force before. [main thread]
  TaskStore();
  TaskStore(const TaskStore&) = delete;
  TaskStore& operator=(const TaskStore&) = delete;
  ~TaskStore();

  /// Which task files to look after.
  struct Tasks {
    BaseSDK::AString m_Scheduler;  ///< the plug-in whose they are
    BaseSDK::AString m_Directory;
    BaseSDK::AString m_Extension;
    BaseSDK::AString m_RefusedPath;  ///< where refused documents go
  };
  /// Throws AgentError when the directory cannot be read. Before the scheduler is loaded; only the
  /// first directory counts. [main thread]
  void Guard(const Tasks& tasks);

  /// Null without a scheduler. [any thread, once plug-ins are loaded]
  StoreFileSystem* Files() const { return m_Files.get(); }
  const BaseSDK::AString& Scheduler() const { return m_Scheduler; }

 private:
  BaseSDK::AFileSystem* m_Before = nullptr;
  SparingFileSystem m_Spared;
  std::unique_ptr<StoreFileSystem> m_Files;
  BaseSDK::AString m_Scheduler;
};

}  // namespace NoxAgent
