#pragma once

#include "agent/daemon/config/Options.h"
#include "agent/daemon/process/Environment.h"

#include <BaseSDK/ALogger.h>
#include <BaseSDK/AString.h>

#include <map>
#include <optional>
#include <vector>

namespace NoxAgent {

/// One plug-in to load: a section "[Plugin NAME]" with its defaults filled in. Paths are absolute.
struct PluginSettings {
  BaseSDK::AString m_Name;        ///< as in requests and notifications
  BaseSDK::AString m_Path;        ///< the shared object
  BaseSDK::AString m_ConfigFile;  ///< its INI file; empty: the built-in configuration
  BaseSDK::AString m_ClassId;     ///< by which its object can be opened; empty: by nobody
  /// By key: what the agent's own settings and its process say where the plug-in's configuration
  /// says nothing.
  std::map<BaseSDK::AString, BaseSDK::AString> m_Inherited{};

  bool operator==(const PluginSettings&) const = default;
};

/// Where the agent logs to, and how much.
struct LogSettings {
  /// Of every channel that m_ChannelLevels does not name; nothing: what LogSetup takes for each.
  std::optional<BaseSDK::ALogger::Level> m_Level{};
  std::map<BaseSDK::AString, BaseSDK::ALogger::Level>
      m_ChannelLevels;                  ///< by channel: see ALogConfig::SetLevel
  BaseSDK::AString m_File;              ///< empty: standard error alone
  long m_FileBytes = 10 * 1024 * 1024;  ///< the file is renamed before it outgrows this
  long m_Files = 5;                     ///< how many renamed ones are kept
  /// Whether jobs' output is logged; without it each plug-in does as it does by default.
  std::optional<bool> m_JobOutput{};
};

/// The agent's settings: the command line over the configuration file over the built-in defaults.
/// docs/operation.md describes the file.
struct Settings {
  BaseSDK::AString m_ConfigFile;  ///< empty: built-in defaults
  BaseSDK::AString m_StateDir;    ///< what %installdir% stands for; absolute, as the next
  BaseSDK::AString m_RuntimeDir;
  BaseSDK::AString m_SocketGroup;  ///< who may use the socket besides root and the agent's own user
  bool m_GroupWritesJobs = false;  ///< whether its members may read and change jobs as well
  LogSettings m_Log;
  std::vector<PluginSettings> m_Plugins;  ///< in the order of loading

  BaseSDK::AString SocketPath() const { return m_RuntimeDir + "/control.sock"; }
  /// `text` with %installdir% replaced.
  BaseSDK::AString Resolve(const BaseSDK::AString& text) const;

  /// Throws AgentError that names file, line and key.
  static Settings Load(const Options& options, const Environment& environment);
};

}  // namespace NoxAgent
