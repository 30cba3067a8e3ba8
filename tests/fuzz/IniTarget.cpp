// An INI file: as the agent's configuration and as a job file.
#include "agent/daemon/AgentError.h"
#include "agent/daemon/config/IniFile.h"
#include "agent/daemon/config/Settings.h"
#include "agent/daemon/config/SettingsReader.h"
#include "agent/handler/job/Job.h"
#include "agent/handler/job/JobError.h"
#include "tests/fuzz/FuzzTarget.h"

#include <string>

using namespace NoxHandler;

using BaseSDK::AString;
using Fuzz::Require;
using NoxAgent::AgentError;
using NoxAgent::IniFile;

namespace {

constexpr const char* FileName = "/etc/nox/file.ini";

void RequirePlace(const std::exception& error) {
  Require(std::string(error.what()).find(FileName) != std::string::npos, "an error names the file");
}

AString Print(const IniFile& file) {
  AString text;
  for (const IniFile::Section& section : file.Sections()) {
    text += "[" + section.m_Name + "]\n";
    for (const IniFile::Entry& entry : section.m_Entries) {
      text += entry.m_Key + "=" + entry.m_Value + "\n";
    }
  }
  return text;
}

void ReadConfiguration(const AString& text) {
  try {
    const IniFile file = IniFile::Parse(FileName, text);
    const AString printed = Print(file);
    Require(Print(IniFile::Parse(FileName, printed)) == printed,
            "a configuration reads the same when it is written out");
    NoxAgent::Settings settings;
    NoxAgent::SettingsReader(file, settings).Read();
    for (const NoxAgent::PluginSettings& plugin : settings.m_Plugins) {
      Require(!plugin.m_Name.IsEmpty(), "every plug-in has a name");
    }
  } catch (const AgentError& error) {
    RequirePlace(error);
  }
}

void ReadJob(const AString& text) {
  try {
    const Job job = Job::Parse(FileName, text);
    Require(!job.m_Command.empty() && job.m_TimeoutSeconds >= 0, "a job is complete");
    Require(job.m_Directory.empty() || job.m_Directory[0] == '/', "a directory is absolute");
  } catch (const JobError& error) {
    RequirePlace(error);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const AString text = Fuzz::Text(data, size);
  ReadConfiguration(text);
  ReadJob(text);
  return 0;
}
