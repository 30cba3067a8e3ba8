#include "agent/daemon/config/SettingChange.h"

#include "agent/daemon/config/Settings.h"

#include <algorithm>

using BaseSDK::AString;

namespace NoxAgent {
namespace {

void Compare(const AString& name, const AString& inForce, const AString& now,
             SettingChanges& changes) {
  if (inForce != now) {
    changes.push_back({name, inForce, now});
  }
}

AString Number(long value) {
  return AString().SetNum(value, 'd');
}

AString YesOrNo(std::optional<bool> value) {
  return !value.has_value() ? "" : *value ? "yes" : "no";
}

// "scheduler, command": which plug-ins there are, in the order of loading.
AString NamesOf(const std::vector<PluginSettings>& plugins) {
  AString names;
  for (const PluginSettings& plugin : plugins) {
    names += names.IsEmpty() ? plugin.m_Name : ", " + plugin.m_Name;
  }
  return names;
}

void Compare(const PluginSettings& inForce, const PluginSettings& now, SettingChanges& changes) {
  const AString section = "[Plugin " + now.m_Name + "] ";
  Compare(section + "path", inForce.m_Path, now.m_Path, changes);
  Compare(section + "config", inForce.m_ConfigFile, now.m_ConfigFile, changes);
  Compare(section + "class_id", inForce.m_ClassId, now.m_ClassId, changes);
}

}  // namespace

SettingChanges FindRestartChanges(const Settings& inForce, const Settings& now) {
  SettingChanges changes;
  Compare("[Agent] state_dir", inForce.m_StateDir, now.m_StateDir, changes);
  Compare("[Agent] runtime_dir", inForce.m_RuntimeDir, now.m_RuntimeDir, changes);
  Compare("[Agent] socket_group", inForce.m_SocketGroup, now.m_SocketGroup, changes);
  Compare("[Agent] group_writes_jobs", YesOrNo(inForce.m_GroupWritesJobs),
          YesOrNo(now.m_GroupWritesJobs), changes);
  Compare("[Log] file", inForce.m_Log.m_File, now.m_Log.m_File, changes);
  Compare("[Log] file_bytes", Number(inForce.m_Log.m_FileBytes), Number(now.m_Log.m_FileBytes),
          changes);
  Compare("[Log] files", Number(inForce.m_Log.m_Files), Number(now.m_Log.m_Files), changes);
  Compare("[Log] job_output", YesOrNo(inForce.m_Log.m_JobOutput), YesOrNo(now.m_Log.m_JobOutput),
          changes);
  Compare("[Plugin ...] sections", NamesOf(inForce.m_Plugins), NamesOf(now.m_Plugins), changes);
  for (const PluginSettings& plugin : now.m_Plugins) {
    const auto before =
        std::find_if(inForce.m_Plugins.begin(), inForce.m_Plugins.end(),
                     [&](const auto& other) { return other.m_Name == plugin.m_Name; });
    if (before != inForce.m_Plugins.end()) {
      Compare(*before, plugin, changes);
    }
  }
  return changes;
}

}  // namespace NoxAgent
