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

  /// Which task files to look after; refused documents go to `refusedPath`. Throws AgentError when
  /// the directory cannot be read. Before the scheduler is loaded; only the first directory counts.
  /// [main thread]
  void Guard(const BaseSDK::AString& directory, const BaseSDK::AString& extension,
             const BaseSDK::AString& refusedPath);

  /// Null before Guard. [any thread]
  const StoreFileSystem* Files() const { return m_Files.get(); }

 private:
  BaseSDK::AFileSystem* m_Before = nullptr;
  SparingFileSystem m_Spared;
  std::unique_ptr<StoreFileSystem> m_Files;
};

}  // namespace NoxAgent
