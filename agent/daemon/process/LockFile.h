#pragma once

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// Keeps a second agent out of a directory for as long as the object lives. The kernel holds the
/// lock and drops it when the process ends, in whatever way; the file may stay behind.
class LockFile {
 public:
  /// Throws AgentError: AlreadyRunning, naming the process that has it, or a failure to make the
  /// file `directory`/noxagentd.lock.
  explicit LockFile(const BaseSDK::AString& directory);
  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;
  ~LockFile();

 private:
  int m_Fd = -1;
};

}  // namespace NoxAgent
