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
/// the plug-in's INI file, or are built in when it has none; where these say nothing, a plug-in
/// inherits what the agent's own settings say.
///
/// Only the plug-in itself knows which keys it has. So a key in the file is an unknown key when the
/// plug-in has not asked for it by the end of its initialisation.
class PluginConfig {
 public:
  /// The section whose keys plug-ins read.
  static const BaseSDK::AString& SectionName();

  using Values = std::map<BaseSDK::AString, BaseSDK::AString>;

  explicit PluginConfig(Values builtIn, Values inherited = {});
  /// Throws AgentError that names file, line and key.
  explicit PluginConfig(const BaseSDK::AString& fileName, Values inherited = {});

  /// Empty for the built-in values.
  const BaseSDK::AString& FileName() const { return m_FileName; }

  /// The value as written, or nothing. Notes that the key was asked for, and what the plug-in was
  /// told. [any thread]
  std::optional<BaseSDK::AString> Ask(const BaseSDK::AString& section, const BaseSDK::AString& key)
      NOX_EXCLUDES(m_Lock);
  /// The value of a key in the section SectionName(), for the agent itself: empty when there is
  /// none, and not noted. [any thread]
  BaseSDK::AString Peek(const BaseSDK::AString& key) const NOX_EXCLUDES(m_Lock);

  /// The keys whose value in the file is another by now than the plug-in was told last. Most
  /// plug-ins ask at their start only, so these take effect at the next one. [any thread]
  SettingChanges NotInForce() const NOX_EXCLUDES(m_Lock);

  /// Where in its file the keys are that the plug-in has asked for: "b in line 2, a in line 5";
  /// empty when there are none. [any thread]
  BaseSDK::AString LinesOfAsked() const NOX_EXCLUDES(m_Lock);

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

  std::optional<BaseSDK::AString> Find(const BaseSDK::AString& key) const NOX_REQUIRES(m_Lock);

  const BaseSDK::AString m_FileName;
  const Values m_Inherited;

  mutable BaseSDK::AMutex m_Lock;
  Table m_Table NOX_GUARDED_BY(m_Lock);
  std::set<BaseSDK::AString> m_Asked NOX_GUARDED_BY(m_Lock);
  /// What the plug-in was told last, by key; empty where there was no value.
  std::map<BaseSDK::AString, BaseSDK::AString> m_Told NOX_GUARDED_BY(m_Lock);
};

}  // namespace NoxAgent
