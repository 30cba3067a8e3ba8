#pragma once

#include "agent/daemon/plugins/Plugin.h"

#include <BaseSDK/AMutex.h>

#include <memory>
#include <vector>

namespace NoxAgent {

/// The plug-ins that are loaded, in the order of loading.
///
/// A plug-in that was removed lives on as long as somebody holds it; requests to it are then
/// answered with an error. [any thread]
class Plugins {
 public:
  using List = std::vector<std::shared_ptr<Plugin>>;

  void Add(std::shared_ptr<Plugin> plugin) NOX_EXCLUDES(m_Lock);
  void Remove(const Plugin& plugin) NOX_EXCLUDES(m_Lock);

  List All() const NOX_EXCLUDES(m_Lock);
  /// The plug-in of that name; null when there is none.
  std::shared_ptr<Plugin> Find(const BaseSDK::AString& name) const NOX_EXCLUDES(m_Lock);
  /// By the class identifier of its object. Null when there is none.
  std::shared_ptr<Plugin> FindClass(const BaseSDK::AString& classId) const NOX_EXCLUDES(m_Lock);

 private:
  mutable BaseSDK::AMutex m_Lock;
  List m_List NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
