#pragma once

#include <optional>

#include "agent/handler/system/FileDescriptor.h"

/// Wakes a poll at a moment of the wall clock, and also when that clock is set, for then the moment
/// has to be looked at anew. Throws std::system_error when the system has no descriptors left.
class CWallTimer {
 public:
  CWallTimer();

  /// Readable from the moment on.
  int Get() const { return m_Fd.Get(); }
  /// Seconds since the epoch; empty: never. Ends an earlier setting and what it made readable.
  void Set(std::optional<long> moment);

 private:
  CFileDescriptor m_Fd;
};
