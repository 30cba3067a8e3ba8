#pragma once

#include <BaseSDK/AMutex.h>

#include <map>
#include <string>
#include <thread>

namespace NoxAgent {

/// Changes that failed after the call that made them had returned, until the thread that made them
/// asks. [any thread]
class FailedChanges {
 public:
  using Errors = std::map<std::string, int>;  ///< by path, each an errno

  /// The change of `path` by `thread` failed. Dropped when memory runs out.
  void Note(std::thread::id thread, const std::string& path, int error) noexcept
      NOX_EXCLUDES(m_Lock);
  /// Those of the calling thread; they are forgotten here.
  Errors TakeOwn() NOX_EXCLUDES(m_Lock);

 private:
  BaseSDK::AMutex m_Lock;
  std::map<std::thread::id, Errors> m_Errors NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
