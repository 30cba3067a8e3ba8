#pragma once

#include "agent/handler/system/FileDescriptor.h"

namespace NoxHandler {

/// A flag that one thread sets and another waits for together with descriptors, as in poll. The
/// constructor throws std::system_error when the system has no descriptors left. [any thread]
class WakeHandle {
 public:
  WakeHandle();

  /// The descriptor to wait on: readable while the flag is set.
  int Get() const { return m_Fd.Get(); }
  void Set() const;
  void Clear() const;
  /// Waits until the flag is set, `milliseconds` at most; false when it is not set then.
  bool Wait(int milliseconds) const;

 private:
  FileDescriptor m_Fd;
};

}  // namespace NoxHandler
