#include "agent/daemon/plugins/Plugins.h"

#include <algorithm>

using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {

void Plugins::Add(std::shared_ptr<Plugin> plugin) {
  AMutexGuard guard(m_Lock);
  m_List.push_back(std::move(plugin));
}

void Plugins::Remove(const Plugin& plugin) {
  AMutexGuard guard(m_Lock);
  std::erase_if(m_List, [&](const auto& other) { return other.get() == &plugin; });
}

Plugins::List Plugins::All() const {
  AMutexGuard guard(m_Lock);
  return m_List;
}

std::shared_ptr<Plugin> Plugins::Find(const AString& name) const {
  AMutexGuard guard(m_Lock);
  const auto found = std::find_if(m_List.begin(), m_List.end(),
                                  [&](const auto& plugin) { return plugin->Name() == name; });
  return found == m_List.end() ? nullptr : *found;
}

std::shared_ptr<Plugin> Plugins::FindClass(const AString& classId) const {
  const BaseSDK::AGuid wanted(classId);
  AMutexGuard guard(m_Lock);
  const auto found = std::find_if(m_List.begin(), m_List.end(), [&](const auto& plugin) {
    return wanted.IsValid() && BaseSDK::AGuid(plugin->Settings().m_ClassId) == wanted;
  });
  return found == m_List.end() ? nullptr : *found;
}

}  // namespace NoxAgent
