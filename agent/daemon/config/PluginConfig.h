#pragma once

#include "agent/daemon/config/SettingChange.h"

#include <BaseSDK/AMutex.h>
#include <BaseSDK/AString.h>

#include <map>
#include <optional>
#include <set>
#include <utility>

namespace NoxAgent {

/// The configuration of one plug-in: what its calls of GetConfigString read. The values come from
/// the plug-in's INI file, or are built in when it has none.
///
/// A plug-in's keys are known to the plug-in alone. So a key of the file that the plug-in has not
/// asked for by the end of its initialisation is an unknown one.
class PluginConfig {
 public:
  /// The section whose keys plug-ins read.
  static const BaseSDK::AString& SectionName();

  using Values = std::map<BaseSDK::AString, BaseSDK::AString>;

  explicit PluginConfig(Values builtIn);
  /// Throws AgentError that names file, line and key.
  explicit PluginConfig(const BaseSDK::AString& fileName);

  /// Empty for the built-in values.
  const BaseSDK::AString& FileName() const { return m_FileName; }

  /// The value as written, or nothing; notes that it was asked for. [any thread]
  std::optional<BaseSDK::AString> Ask(const BaseSDK::AString& section, const BaseSDK::AString& key)
      NOX_EXCLUDES(m_Lock);
  /// As Ask in SectionName(), empty when there is none, and without noting it. [any thread]
  BaseSDK::AString Peek(const BaseSDK::AString& key) const NOX_EXCLUDES(m_Lock);

  /// What the file says by now and the plug-in has not read since it last asked: in most plug-ins
  /// that is in force at the next start. [any thread]
  SettingChanges NotInForce() const NOX_EXCLUDES(m_Lock);

  /// Throws AgentError for the first key of the file that nobody has asked for.
  void RefuseUnasked() const NOX_EXCLUDES(m_Lock);

  /// Reads the file again; after a throw the old values stand. A key that nobody has asked for is
  /// refused here too. [any thread]
  void Reload() NOX_EXCLUDES(m_Lock);

 private:
  struct Value {
    BaseSDK::AString m_Text;
    unsigned m_Line = 0;
  };
  using Table = std::map<BaseSDK::AString, Value>;

  static Table Read(const BaseSDK::AString& fileName);
  void RefuseUnasked(const Table& table) const NOX_REQUIRES(m_Lock);

  const BaseSDK::AString m_FileName;

  mutable BaseSDK::AMutex m_Lock;
  Table m_Table NOX_GUARDED_BY(m_Lock);
  std::set<BaseSDK::AString> m_Asked NOX_GUARDED_BY(m_Lock);
  /// What the plug-in was told last, by key; empty where there was no value.
  std::map<BaseSDK::AString, BaseSDK::AString> m_Told NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
