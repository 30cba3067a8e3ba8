#include "agent/daemon/config/Settings.h"

#include "agent/daemon/config/BuiltInPlugins.h"
#include "agent/daemon/config/DefaultPaths.h"
#include "agent/daemon/config/IniFile.h"
#include "agent/daemon/config/SettingsReader.h"

using BaseSDK::AString;

namespace NoxAgent {
namespace {

AString Absolute(const AString& path, const Environment& environment) {
  return path.IsEmpty() || path[0] == L'/' ? path : environment.m_WorkingDir + "/" + path;
}

void FillPlugins(Settings& settings, const Environment& environment) {
  if (settings.m_Plugins.empty()) {
    for (const BuiltInPlugin& builtIn : BuiltInPlugin::All()) {
      settings.m_Plugins.push_back({builtIn.m_Name, {}, {}, {}});
    }
  }
  for (PluginSettings& plugin : settings.m_Plugins) {
    if (settings.m_Log.m_JobOutput.has_value()) {
      plugin.m_Inherited["job_output"] = *settings.m_Log.m_JobOutput ? "yes" : "no";
    }
    if (!environment.m_RunGroup.IsEmpty()) {
      plugin.m_Inherited["cgroup_path"] = environment.m_RunGroup;
    }
    const BuiltInPlugin* const builtIn = BuiltInPlugin::Find(plugin.m_Name);
    if (builtIn == nullptr) {
      continue;
    }
    if (plugin.m_Path.IsEmpty()) {
      plugin.m_Path = DefaultPaths::Plugin(environment, builtIn->m_FileName);
    }
    if (plugin.m_ClassId.IsEmpty()) {
      plugin.m_ClassId = builtIn->m_ClassId;
    }
  }
}

}  // namespace

AString Settings::Resolve(const AString& text) const {
  static const AString Placeholder("%installdir%");
  AString resolved;
  std::size_t begin = 0;
  for (std::size_t found = text.Find(Placeholder); found != AString::npos;
       found = text.Find(Placeholder, begin)) {
    resolved += text.Mid(begin, found - begin) + m_StateDir;
    begin = found + Placeholder.Length();
  }
  return resolved + text.Mid(begin);
}

Settings Settings::Load(const Options& options, const Environment& environment) {
  Settings settings;
  settings.m_ConfigFile = Absolute(options.m_ConfigFile, environment);
  settings.m_StateDir = Absolute(options.m_StateDir, environment);
  settings.m_RuntimeDir = Absolute(options.m_RuntimeDir, environment);
  if (!settings.m_ConfigFile.IsEmpty()) {
    const IniFile file = IniFile::Load(settings.m_ConfigFile);
    SettingsReader(file, settings).Read();
  }
  if (settings.m_StateDir.IsEmpty()) {
    settings.m_StateDir = DefaultPaths::StateDir(environment);
  }
  if (settings.m_RuntimeDir.IsEmpty()) {
    settings.m_RuntimeDir = DefaultPaths::RuntimeDir(environment, settings.m_StateDir);
  }
  if (options.m_LogLevel.has_value()) {
    settings.m_Log.m_Level = options.m_LogLevel;
  }
  FillPlugins(settings, environment);
  return settings;
}

}  // namespace NoxAgent
