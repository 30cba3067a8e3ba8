#pragma once

#include "agent/handler/system/FileDescriptor.h"

namespace NoxHandler {

/// A flag that threads can wait for together with descriptors. Throws std::system_error when the
/// system has no descriptors left. [any thread]
class WakeHandle {
 public:
  WakeHandle();

  /// Readable while the flag is set.
  int Get() const { return m_Fd.Get(); }
  void Set() const;
  void Clear() const;
  /// Whether the flag is set within that time.
  bool Wait(int milliseconds) const;

 private:
  FileDescriptor m_Fd;
};

}  // namespace NoxHandler
