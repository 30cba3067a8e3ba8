#pragma once

#include <BaseSDK/AString.h>

namespace NoxAgent {

/// Keeps a second agent away from a directory, for as long as the object lives. The lock is the
/// kernel's: it goes with the process, however that ends, and the file may stay.
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
