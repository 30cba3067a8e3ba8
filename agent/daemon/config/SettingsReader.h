#pragma once

#include "agent/daemon/config/IniFile.h"
#include "agent/daemon/config/Settings.h"

namespace NoxAgent {

/// Reads the agent's configuration file into Settings: section by section, each key checked where
/// it is read. Everything unknown is an error, so that a typing error cannot pass for a setting.
class SettingsReader {
 public:
  /// Both arguments are borrowed and outlive this object.
  SettingsReader(const IniFile& file, Settings& settings);

  /// Throws AgentError. Directories that options or defaults have set already stay as they are.
  void Read();

 private:
  using Section = IniFile::Section;
  using Entry = IniFile::Entry;

  void ReadSection(const Section& section);
  void ReadAgent(const Entry& entry);
  void ReadLog(const Entry& entry);
  void ReadLevel(const Entry& entry);
  void ReadPlugin(const Section& section);
  void ReadPluginKey(const Entry& entry, PluginSettings& plugin) const;
  void AddPlugin(const Section& section, PluginSettings plugin);

  BaseSDK::AString Text(const Entry& entry) const;
  /// Relative paths count from the directory of the file.
  BaseSDK::AString Path(const Entry& entry) const;
  bool YesOrNo(const Entry& entry) const;
  long Number(const Entry& entry, long min, long max) const;
  BaseSDK::ALogger::Level Level(const Entry& entry) const;
  AgentError UnknownKey(const Entry& entry, const BaseSDK::AString& known) const;

  const IniFile& m_File;
  Settings& m_Settings;
};

}  // namespace NoxAgent
