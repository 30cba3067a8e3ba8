#pragma once

#include "agent/daemon/store/ReadingTimes.h"

#include <BaseSDK/AMutex.h>

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

 private:
  const ReadingTimes& m_Readings;

  BaseSDK::AMutex m_Lock;
  int m_Error NOX_GUARDED_BY(m_Lock) = 0;             ///< of the last write
  unsigned long m_Failed NOX_GUARDED_BY(m_Lock) = 0;  ///< in a row
};

}  // namespace NoxAgent
