#include "agent/daemon/config/PluginConfig.h"

#include "agent/daemon/config/IniFile.h"

using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {

const AString& PluginConfig::SectionName() {
  static const AString Name("Configuration");
  return Name;
}

PluginConfig::PluginConfig(Values builtIn, Values inherited) : m_Inherited(std::move(inherited)) {
  for (auto& [key, text] : builtIn) {
    m_Table[key] = {text, 0};  // in no line
    m_Asked.insert(key);       // nobody can have mistyped a built-in value
  }
}

PluginConfig::PluginConfig(const AString& fileName, Values inherited)
    : m_FileName(fileName), m_Inherited(std::move(inherited)), m_Table(Read(fileName)) {}

std::optional<AString> PluginConfig::Ask(const AString& section, const AString& key) {
  if (section != SectionName()) {
    return std::nullopt;
  }
  AMutexGuard guard(m_Lock);
  m_Asked.insert(key);
  std::optional<AString> value = Find(key);
  m_Told[key] = value.value_or(AString());
  return value;
}

AString PluginConfig::Peek(const AString& key) const {
  AMutexGuard guard(m_Lock);
  return Find(key).value_or(AString());
}

SettingChanges PluginConfig::NotInForce() const {
  AMutexGuard guard(m_Lock);
  SettingChanges changes;
  for (const auto& [key, told] : m_Told) {
    const AString now = Find(key).value_or(AString());
    if (now != told) {
      changes.push_back({key, told, now});
    }
  }
  return changes;
}

AString PluginConfig::LinesOfAsked() const {
  AMutexGuard guard(m_Lock);
  std::map<unsigned, AString> keys;
  for (const auto& [key, value] : m_Table) {
    if (value.m_Line != 0 && m_Asked.contains(key)) {
      keys[value.m_Line] = key;
    }
  }
  AString lines;
  for (const auto& [line, key] : keys) {
    lines += lines.IsEmpty() ? "" : ", ";
    lines += AString("%1 in line %2").Arg(key, AString().SetNum(line, 'u'));
  }
  return lines;
}

void PluginConfig::RefuseUnasked() const {
  AMutexGuard guard(m_Lock);
  RefuseUnasked(m_Table);
}

void PluginConfig::Reload() {
  if (m_FileName.IsEmpty()) {
    return;
  }
  Table table = Read(m_FileName);
  AMutexGuard guard(m_Lock);
  RefuseUnasked(table);
  m_Table = std::move(table);
}

std::optional<AString> PluginConfig::Find(const AString& key) const {
  if (const auto found = m_Table.find(key); found != m_Table.end()) {
    return found->second.m_Text;
  }
  const auto inherited = m_Inherited.find(key);
  return inherited == m_Inherited.end() ? std::nullopt : std::optional(inherited->second);
}

PluginConfig::Table PluginConfig::Read(const AString& fileName) {
  const IniFile file = IniFile::Load(fileName);
  Table table;
  for (const IniFile::Section& section : file.Sections()) {
    if (section.m_Name != SectionName()) {
      throw file.ErrorAt(section.m_Line, AString("unknown section \"%1\"; a plug-in's file has the "
                                                 "section \"%2\" alone")
                                             .Arg(section.m_Name, SectionName()));
    }
    for (const IniFile::Entry& entry : section.m_Entries) {
      table[entry.m_Key] = {entry.m_Value, entry.m_Line};
    }
  }
  return table;
}

void PluginConfig::RefuseUnasked(const Table& table) const {
  for (const auto& [key, value] : table) {
    if (!m_Asked.contains(key)) {
      throw AgentError(AgentError::Kind::Usage,
                       AString("%1:%2: unknown key \"%3\": the plug-in reads no such setting")
                           .Arg(m_FileName, AString().SetNum(value.m_Line, 'u'), key));
    }
  }
}

}  // namespace NoxAgent
