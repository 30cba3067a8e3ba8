#pragma once

#include "agent/handler/job/ProcessLimits.h"

#include <sys/types.h>

#include <chrono>
#include <string>

namespace NoxHandler {

/// A control group (version 2) of its own for the processes of one run: what it limits and counts
/// is theirs together. The processes that a member starts are members too. [one thread at a time]
///
/// Source of the files' names and meanings: the kernel's documentation, "Control Group v2".
class ControlGroup {
 public:
  /// Makes the directory `path`, and its limit of memory the one in `limits`, if that has one.
  /// Throws JobError that says what the system refuses; nothing is left then.
  ControlGroup(std::string path, const ProcessLimits& limits);
  ControlGroup(const ControlGroup&) = delete;
  ControlGroup& operator=(const ControlGroup&) = delete;
  /// Removes the directory. It stays as long as a process is in it.
  ~ControlGroup();

  /// Makes the process a member. Throws JobError when the system refuses.
  void Add(pid_t pid) const;
  /// The processor time that all members have taken so far, those that have ended included.
  std::chrono::microseconds CpuTime() const;
  /// Whether members were killed because together they wanted more memory than the limit.
  bool RanOutOfMemory() const;

  /// Removes the group when no process is in it any more. True when it is gone.
  static bool Remove(const std::string& path);

 private:
  void LimitMemory(const ProcessLimits& limits) const;
  int Write(const char* file, const std::string& text) const;
  unsigned long long Count(const char* file, const std::string& key) const;

  const std::string m_Path;
};

}  // namespace NoxHandler
