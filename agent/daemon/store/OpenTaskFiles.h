#pragma once

#include <BaseSDK/AMutex.h>

#include <map>
#include <optional>
#include <string>

namespace NoxAgent {

/// The task files that are open now, by their descriptors. There are two kinds: files that are
/// being made, which nobody may judge yet; and files that were judged when they were opened for
/// reading. Of these the bytes are kept here, so that the scheduler reads exactly the bytes that
/// were judged.
///
/// [any thread]
class OpenTaskFiles {
 public:
  /// The file `name` was created by this descriptor and is yet to be written.
  void AddMade(int fd, const std::string& name) NOX_EXCLUDES(m_Lock);
  /// The open file was found good, and these are its bytes.
  void AddJudged(int fd, std::string bytes) NOX_EXCLUDES(m_Lock);
  /// Forgets the file. Call it before the descriptor is closed: its number may be used again then.
  void Remove(int fd) NOX_EXCLUDES(m_Lock);

  bool IsBeingMade(const std::string& name) const NOX_EXCLUDES(m_Lock);
  /// The name of the file when it is being made; nothing otherwise.
  std::optional<std::string> NameOfMade(int fd) const NOX_EXCLUDES(m_Lock);
  /// The next `size` bytes at most of a file that was judged; `got` is 0 at its end. False when the
  /// descriptor is not that of a judged file.
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
