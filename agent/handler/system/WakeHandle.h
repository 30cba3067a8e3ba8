#pragma once

#include "agent/handler/system/FileDescriptor.h"

/// A flag that threads can wait for together with descriptors. Throws std::system_error when the
/// system has no descriptors left. [any thread]
class CWakeHandle {
 public:
  CWakeHandle();

  /// Readable while the flag is set.
  int Get() const { return m_Fd.Get(); }
  void Set() const;
  void Clear() const;
  /// Whether the flag is set within that time.
  bool Wait(int milliseconds) const;

 private:
  CFileDescriptor m_Fd;
};
