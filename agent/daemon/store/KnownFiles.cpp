#include "agent/daemon/store/KnownFiles.h"

using BaseSDK::AMutexGuard;

namespace NoxAgent {

void KnownFiles::Accept(const std::string& name, const FileIdentity& identity, bool settled,
                        Reader reader) {
  AMutexGuard guard(m_Lock);
  Entry& entry = Renew(name, identity);
  entry.m_Accepted = settled;
  if (reader == Reader::Scheduler) {
    entry.m_InMemory = identity;
  }
}

bool KnownFiles::Refuse(const std::string& name, const FileIdentity& identity,
                        const Refusal& refusal) {
  AMutexGuard guard(m_Lock);
  const auto found = m_Entries.find(name);
  const bool isNews = found == m_Entries.end() || !found->second.m_Refusal.has_value() ||
                      found->second.m_Identity != identity ||
                      found->second.m_Refusal->m_Reason != refusal.m_Reason;
  Renew(name, identity).m_Refusal = refusal;
  return isNews;
}

void KnownFiles::Write(const std::string& name, const FileIdentity& identity) {
  AMutexGuard guard(m_Lock);
  Renew(name, identity).m_InMemory = identity;
}

void KnownFiles::Forget(const std::string& name) {
  AMutexGuard guard(m_Lock);
  m_Entries.erase(name);
}

bool KnownFiles::IsAccepted(const std::string& name, const FileIdentity& identity, Reader reader) {
  AMutexGuard guard(m_Lock);
  const auto found = m_Entries.find(name);
  if (found == m_Entries.end() || !found->second.m_Accepted ||
      found->second.m_Identity != identity) {
    return false;
  }
  found->second.m_Reading = m_Reading;
  if (reader == Reader::Scheduler) {
    found->second.m_InMemory = identity;
  }
  return true;
}

bool KnownFiles::IsCurrent(const std::string& name, const FileIdentity& identity) const {
  AMutexGuard guard(m_Lock);
  const auto found = m_Entries.find(name);
  return found != m_Entries.end() && found->second.m_InMemory == identity;
}

std::optional<Refusal> KnownFiles::RefusalOf(const std::string& name) const {
  AMutexGuard guard(m_Lock);
  const auto found = m_Entries.find(name);
  return found != m_Entries.end() ? found->second.m_Refusal : std::nullopt;
}

void KnownFiles::BeginReading() {
  AMutexGuard guard(m_Lock);
  ++m_Reading;
}

void KnownFiles::EndReading() {
  AMutexGuard guard(m_Lock);
  std::erase_if(m_Entries, [&](const auto& item)
                               NOX_REQUIRES(m_Lock) { return item.second.m_Reading != m_Reading; });
}

KnownFiles::Entry& KnownFiles::Renew(const std::string& name, const FileIdentity& identity) {
  Entry& entry = m_Entries[name];
  entry = {identity, entry.m_InMemory, false, std::nullopt, m_Reading};
  return entry;
}

}  // namespace NoxAgent
