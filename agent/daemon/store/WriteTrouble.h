#pragma once

#include "agent/daemon/store/ReadingTimes.h"

#include <BaseSDK/AMutex.h>

#include <map>
#include <string>

namespace NoxAgent {

/// Tells in the log when task files cannot be written any more, and when they can again: on a full
/// disk every run of every task would have something to say.
///
/// [any thread]
class WriteTrouble {
 public:
  /// `readings` is borrowed.
  explicit WriteTrouble(const ReadingTimes& readings) : m_Readings(readings) {}

  /// How writing the task file `name` ended: 0 or an errno.
  void Note(const std::string& name, int error) NOX_EXCLUDES(m_Lock);

  /// Why the file tells something else than the scheduler has in memory: an errno, or 0.
  int ErrorOf(const std::string& name) const NOX_EXCLUDES(m_Lock);
  /// The file is gone.
  void Forget(const std::string& name) NOX_EXCLUDES(m_Lock);
  /// The scheduler reads all files again, so what they tell is what it has.
  void ForgetFiles() NOX_EXCLUDES(m_Lock);

 private:
  const ReadingTimes& m_Readings;

  mutable BaseSDK::AMutex m_Lock;
  int m_Error NOX_GUARDED_BY(m_Lock) = 0;             ///< of the last write
  unsigned long m_Failed NOX_GUARDED_BY(m_Lock) = 0;  ///< in a row
  std::map<std::string, int> m_Stale NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
