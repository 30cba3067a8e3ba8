#pragma once

#include "agent/handler/system/FileDescriptor.h"

#include <optional>

namespace NoxHandler {

/// Wakes a poll at a moment of the wall clock. It also does so when that clock is set, because the
/// wait may have become longer or shorter. The constructor throws std::system_error when the system
/// has no descriptors left.
class WallTimer {
 public:
  WallTimer();

  /// The descriptor to wait on: readable from the moment on, or from a step of the clock on.
  int Get() const { return m_Fd.Get(); }
  /// Sets the moment in seconds since the epoch; nothing for never. The descriptor is not readable
  /// any more until then.
  void Set(std::optional<long> moment);

 private:
  FileDescriptor m_Fd;
};

}  // namespace NoxHandler
