#include "agent/daemon/config/SettingsReader.h"

#include "agent/daemon/config/BuiltInPlugins.h"

#include <BaseSDK/AGuid.h>
#include <BaseSDK/ALogConfig.h>

#include <algorithm>
#include <limits>

using BaseSDK::ALogConfig;
using BaseSDK::ALogger;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

const wchar_t* const PluginPrefix = L"Plugin ";
constexpr long MinFileBytes = 4096;
constexpr long MaxFiles = 1000;

AString Quoted(const AString& text) {
  return "\"" + text + "\"";
}

// A name is part of the paths of requests.
bool IsPluginName(const AString& name) {
  const std::wstring& text = name.Str();
  return !text.empty() && text.size() <= 64 &&
         std::all_of(text.begin(), text.end(), [](wchar_t character) {
           return (character >= L'a' && character <= L'z') ||
                  (character >= L'A' && character <= L'Z') ||
                  (character >= L'0' && character <= L'9') || character == L'-' ||
                  character == L'_';
         });
}

}  // namespace

SettingsReader::SettingsReader(const IniFile& file, Settings& settings)
    : m_File(file), m_Settings(settings) {}

void SettingsReader::Read() {
  for (const Section& section : m_File.Sections()) {
    ReadSection(section);
  }
}

void SettingsReader::ReadSection(const Section& section) {
  const AString prefix(PluginPrefix);
  if (section.m_Name.Left(prefix.Length()) == prefix) {
    ReadPlugin(section);
    return;
  }
  void (SettingsReader::*read)(const Entry&) = nullptr;
  if (section.m_Name == "Agent") {
    read = &SettingsReader::ReadAgent;
  } else if (section.m_Name == "Log") {
    read = &SettingsReader::ReadLog;
  } else if (section.m_Name == "LogLevels") {
    read = &SettingsReader::ReadLevel;
  } else {
    throw m_File.ErrorAt(section.m_Line, "unknown section " + Quoted(section.m_Name) +
                                             "; there are Agent, Log, LogLevels and Plugin NAME");
  }
  for (const Entry& entry : section.m_Entries) {
    (this->*read)(entry);
  }
}

void SettingsReader::ReadAgent(const Entry& entry) {
  if (entry.m_Key == "state_dir") {
    const AString path = Path(entry);
    m_Settings.m_StateDir = m_Settings.m_StateDir.IsEmpty() ? path : m_Settings.m_StateDir;
  } else if (entry.m_Key == "runtime_dir") {
    const AString path = Path(entry);
    m_Settings.m_RuntimeDir = m_Settings.m_RuntimeDir.IsEmpty() ? path : m_Settings.m_RuntimeDir;
  } else if (entry.m_Key == "socket_group") {
    m_Settings.m_SocketGroup = Text(entry);
  } else if (entry.m_Key == "group_writes_jobs") {
    m_Settings.m_GroupWritesJobs = YesOrNo(entry);
  } else {
    throw UnknownKey(entry, "state_dir, runtime_dir, socket_group, group_writes_jobs");
  }
}

void SettingsReader::ReadLog(const Entry& entry) {
  LogSettings& log = m_Settings.m_Log;
  if (entry.m_Key == "level") {
    log.m_Level = Level(entry);
  } else if (entry.m_Key == "file") {
    log.m_File = Path(entry);
  } else if (entry.m_Key == "file_bytes") {
    log.m_FileBytes = Number(entry, MinFileBytes, std::numeric_limits<std::int32_t>::max());
  } else if (entry.m_Key == "files") {
    log.m_Files = Number(entry, 0, MaxFiles);
  } else if (entry.m_Key == "job_output") {
    log.m_JobOutput = YesOrNo(entry);
  } else {
    throw UnknownKey(entry, "level, file, file_bytes, files, job_output");
  }
}

void SettingsReader::ReadLevel(const Entry& entry) {
  m_Settings.m_Log.m_ChannelLevels[entry.m_Key] = Level(entry);
}

void SettingsReader::ReadPlugin(const Section& section) {
  PluginSettings plugin;
  plugin.m_Name = section.m_Name.Mid(AString(PluginPrefix).Length());
  if (!IsPluginName(plugin.m_Name)) {
    throw m_File.ErrorAt(
        section.m_Line, Quoted(plugin.m_Name) +
                            " is no name for a plug-in: up to 64 letters, digits, \"-\" and \"_\"");
  }
  for (const Entry& entry : section.m_Entries) {
    ReadPluginKey(entry, plugin);
  }
  AddPlugin(section, std::move(plugin));
}

void SettingsReader::ReadPluginKey(const Entry& entry, PluginSettings& plugin) const {
  if (entry.m_Key == "path") {
    plugin.m_Path = Path(entry);
  } else if (entry.m_Key == "config") {
    plugin.m_ConfigFile = Path(entry);
  } else if (entry.m_Key == "class_id") {
    plugin.m_ClassId = Text(entry);
    if (!BaseSDK::AGuid(plugin.m_ClassId).IsValid()) {
      throw m_File.ErrorAt(entry.m_Line,
                           "the key \"class_id\" wants an identifier in the form "
                           "{7C0A1D52-3B4E-4F6A-9A51-2D8E6C9B4F10}, not " +
                               Quoted(plugin.m_ClassId));
    }
  } else {
    throw UnknownKey(entry, "path, config, class_id");
  }
}

void SettingsReader::AddPlugin(const Section& section, PluginSettings plugin) {
  if (plugin.m_Path.IsEmpty() && BuiltInPlugin::Find(plugin.m_Name) == nullptr) {
    throw m_File.ErrorAt(section.m_Line, "the plug-in " + Quoted(plugin.m_Name) +
                                             " lacks the key \"path\", its shared object");
  }
  for (const PluginSettings& other : m_Settings.m_Plugins) {
    if (!plugin.m_ClassId.IsEmpty() &&
        BaseSDK::AGuid(other.m_ClassId) == BaseSDK::AGuid(plugin.m_ClassId)) {
      throw m_File.ErrorAt(section.m_Line, "the plug-ins " + Quoted(other.m_Name) + " and " +
                                               Quoted(plugin.m_Name) +
                                               " have the same \"class_id\"");
    }
  }
  m_Settings.m_Plugins.push_back(std::move(plugin));
}

AString SettingsReader::Text(const Entry& entry) const {
  if (entry.m_Value.IsEmpty()) {
    throw m_File.ErrorAt(entry.m_Line, "the key " + Quoted(entry.m_Key) + " has no value");
  }
  return entry.m_Value;
}

AString SettingsReader::Path(const Entry& entry) const {
  const AString path = Text(entry);
  const bool complete = path[0] == L'/' || path.Find("%installdir%") == 0;
  return complete ? path : m_File.FileName().Left(m_File.FileName().ReverseFind(L'/') + 1) + path;
}

bool SettingsReader::YesOrNo(const Entry& entry) const {
  const AString text = Text(entry);
  if (text != "yes" && text != "no") {
    throw m_File.ErrorAt(
        entry.m_Line, "the key " + Quoted(entry.m_Key) + " wants yes or no, not " + Quoted(text));
  }
  return text == "yes";
}

long SettingsReader::Number(const Entry& entry, long min, long max) const {
  const AString text = Text(entry);
  const long number = text.ToLong();
  // Reading stops at the ends of the 32-bit range and yields 0 for what is no number.
  if (AString().SetNum(number, 'd') != text || number < min || number > max) {
    throw m_File.ErrorAt(
        entry.m_Line,
        AString("the key \"%1\" wants a whole number from %2 to %3, not \"%4\"")
            .Arg(entry.m_Key, AString().SetNum(min, 'd'), AString().SetNum(max, 'd'), text));
  }
  return number;
}

ALogger::Level SettingsReader::Level(const Entry& entry) const {
  ALogger::Level level{};
  if (!ALogConfig::ParseLevel(entry.m_Value, level)) {
    throw m_File.ErrorAt(entry.m_Line, "the key " + Quoted(entry.m_Key) +
                                           " wants a level (error, warning, notice, information, "
                                           "debug or trace), not " +
                                           Quoted(entry.m_Value));
  }
  return level;
}

AgentError SettingsReader::UnknownKey(const Entry& entry, const AString& known) const {
  return m_File.ErrorAt(entry.m_Line,
                        "unknown key " + Quoted(entry.m_Key) + "; there are " + known);
}

}  // namespace NoxAgent
