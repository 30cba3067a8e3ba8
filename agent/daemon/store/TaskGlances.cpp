#include "agent/daemon/store/TaskGlances.h"

#include <algorithm>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {

std::optional<TaskGlance> TaskGlances::Find(const AString& taskId,
                                            const FileIdentity& identity) const {
  AMutexGuard guard(m_Lock);
  const auto found = m_Entries.find(taskId);
  return found != m_Entries.end() && found->second.m_Identity == identity
             ? std::optional(found->second.m_Glance)
             : std::nullopt;
}

void TaskGlances::Keep(const AString& taskId, const FileIdentity& identity,
                       const TaskGlance& glance, long now) {
  if (identity.IsSettled(now)) {
    AMutexGuard guard(m_Lock);
    m_Entries[taskId] = {identity, glance};
  }
}

void TaskGlances::ForgetAllBut(const std::vector<AString>& taskIds) {
  AMutexGuard guard(m_Lock);
  if (m_Entries.size() > taskIds.size()) {
    std::erase_if(m_Entries, [&](const auto& entry) {
      return !std::binary_search(taskIds.begin(), taskIds.end(), entry.first);
    });
  }
}

}  // namespace NoxAgent
