#pragma once

#include "agent/daemon/journal/JournaledFiles.h"

#include <thread>

namespace NoxAgent {

/// A thread that puts replaced files in their place when they are many, and makes safe within a
/// moment what nobody waits for.
class JournalFollower {
 public:
  /// Starts the thread. `files` is borrowed and outlives this object. Throws std::system_error when
  /// the system has no thread to give.
  explicit JournalFollower(JournaledFiles& files);
  JournalFollower(const JournalFollower&) = delete;
  JournalFollower& operator=(const JournalFollower&) = delete;
  /// Ends the thread.
  ~JournalFollower();

 private:
  JournaledFiles& m_Files;
  std::thread m_Thread;
};

}  // namespace NoxAgent
