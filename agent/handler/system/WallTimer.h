#pragma once

#include "agent/handler/system/FileDescriptor.h"

#include <optional>

namespace NoxHandler {

/// Wakes a poll at a moment of the wall clock, and also when that clock is set, for then the moment
/// has to be looked at anew. Throws std::system_error when the system has no descriptors left.
class WallTimer {
 public:
  WallTimer();

  /// Readable from the moment on.
  int Get() const { return m_Fd.Get(); }
  /// Seconds since the epoch; empty: never. Ends an earlier setting and what it made readable.
  void Set(std::optional<long> moment);

 private:
  FileDescriptor m_Fd;
};

}  // namespace NoxHandler
