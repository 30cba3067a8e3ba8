#pragma once

#include <BaseSDK/AMutex.h>

#include <map>
#include <optional>
#include <string>

namespace NoxAgent {

/// The task files that are open, by their descriptors: those that are being made, which nobody is
/// to judge yet, and those that were judged to be read, whose bytes then come from here: so the
/// scheduler reads just what was judged.
///
/// [any thread]
class OpenTaskFiles {
 public:
  void AddMade(int fd, const std::string& name) NOX_EXCLUDES(m_Lock);
  void AddJudged(int fd, std::string bytes) NOX_EXCLUDES(m_Lock);
  /// Before the descriptor is closed.
  void Remove(int fd) NOX_EXCLUDES(m_Lock);

  bool IsBeingMade(const std::string& name) const NOX_EXCLUDES(m_Lock);
  /// The name of one that is being made.
  std::optional<std::string> NameOfMade(int fd) const NOX_EXCLUDES(m_Lock);
  /// The next bytes of one that was judged; false when the descriptor is none of these.
  bool Read(int fd, void* buffer, std::size_t size, std::size_t& got) NOX_EXCLUDES(m_Lock);

 private:
  struct Judged {
    std::string m_Bytes;
    std::size_t m_Offset = 0;
  };

  mutable BaseSDK::AMutex m_Lock;
  std::map<int, std::string> m_Made NOX_GUARDED_BY(m_Lock);
  std::map<int, Judged> m_Judged NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
