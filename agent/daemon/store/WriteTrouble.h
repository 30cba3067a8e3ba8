#pragma once

#include "agent/daemon/store/ReadingTimes.h"

#include <BaseSDK/AMutex.h>

#include <map>
#include <string>

namespace NoxAgent {

/// Logs when task files cannot be written any more, and when they can be again. It says so once
/// each: on a full disk every run of every task would repeat it.
///
/// [any thread]
class WriteTrouble {
 public:
  /// `readings` is borrowed and outlives this object.
  explicit WriteTrouble(const ReadingTimes& readings) : m_Readings(readings) {}

  /// Writing the task file `name` ended with `error`: 0 or an errno.
  void Note(const std::string& name, int error) NOX_EXCLUDES(m_Lock);

  /// Why the file says something else than the scheduler has in memory: the errno of its last
  /// write, or 0 when it does not.
  int ErrorOf(const std::string& name) const NOX_EXCLUDES(m_Lock);
  /// The file is gone.
  void Forget(const std::string& name) NOX_EXCLUDES(m_Lock);
  /// The scheduler reads all files again, so it has in memory what they say.
  void ForgetFiles() NOX_EXCLUDES(m_Lock);

 private:
  // Whether it is to be told.
  bool NoteFailure(const std::string& name, int error) NOX_REQUIRES(m_Lock);
  bool NoteSuccess(const std::string& name) NOX_REQUIRES(m_Lock);

  const ReadingTimes& m_Readings;

  mutable BaseSDK::AMutex m_Lock;
  int m_Error NOX_GUARDED_BY(m_Lock) = 0;             ///< told last; 0 once writing works again
  unsigned long m_Failed NOX_GUARDED_BY(m_Lock) = 0;  ///< writes since it was told first
  std::map<std::string, int> m_Stale NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
