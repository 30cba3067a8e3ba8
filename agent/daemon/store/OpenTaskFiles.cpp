#include "agent/daemon/store/OpenTaskFiles.h"

#include <algorithm>
#include <cstring>

using BaseSDK::AMutexGuard;

namespace NoxAgent {

void OpenTaskFiles::AddMade(int fd, const std::string& name) {
  AMutexGuard guard(m_Lock);
  m_Made[fd] = name;
}

void OpenTaskFiles::AddJudged(int fd, std::string bytes) {
  AMutexGuard guard(m_Lock);
  m_Judged[fd] = {std::move(bytes), 0};
}

void OpenTaskFiles::Remove(int fd) {
  AMutexGuard guard(m_Lock);
  m_Made.erase(fd);
  m_Judged.erase(fd);
}

bool OpenTaskFiles::IsBeingMade(const std::string& name) const {
  AMutexGuard guard(m_Lock);
  return std::any_of(m_Made.begin(), m_Made.end(),
                     [&](const auto& made) { return made.second == name; });
}

std::optional<std::string> OpenTaskFiles::NameOfMade(int fd) const {
  AMutexGuard guard(m_Lock);
  const auto found = m_Made.find(fd);
  return found != m_Made.end() ? std::optional(found->second) : std::nullopt;
}

bool OpenTaskFiles::Read(int fd, void* buffer, std::size_t size, std::size_t& got) {
  AMutexGuard guard(m_Lock);
  const auto found = m_Judged.find(fd);
  if (found == m_Judged.end()) {
    return false;
  }
  Judged& file = found->second;
  got = std::min(size, file.m_Bytes.size() - file.m_Offset);
  std::memcpy(buffer, file.m_Bytes.data() + file.m_Offset, got);
  file.m_Offset += got;
  return true;
}

}  // namespace NoxAgent
