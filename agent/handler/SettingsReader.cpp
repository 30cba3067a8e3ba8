#include "agent/handler/SettingsReader.h"

#include "agent/Protocol.h"

#include <AgentSDK/APluginMgr.h>
#include <BaseSDK/ADescriptorLimit.h>
#include <BaseSDK/AGuid.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

using BaseSDK::AString;

namespace NoxHandler {

namespace {

constexpr long KillGraceSeconds = 5;
constexpr long MaxGraceSeconds = 3600;
constexpr long MaxRuns = 200;
constexpr long MaxMaxRuns = 100000;
constexpr unsigned long DescriptorsOfAgent = 200;  // sockets, logs, files for a moment

[[noreturn]] void Refuse(const AString& key, const AString& reason) {
  throw std::runtime_error(AString("%1: %2").Arg(key, reason).ToUtf8());
}

AString Value(const char* key, const AString& fallback = AString()) {
  return AgentSDK::APluginMgr().GetConfigString("Configuration", key, fallback);
}

AString ReadDirectory(const char* key, const AString& path) {
  if (path.IsEmpty()) {
    Refuse(key, "the configuration does not say which directory");
  }
  if (path[0] != L'/') {
    Refuse(key, AString("\"%1\" is not an absolute path").Arg(path));
  }
  std::error_code error;
  (void)std::filesystem::create_directories(path.ToUtf8(), error);
  if (error) {
    Refuse(key, AString("cannot make the directory %1: %2").Arg(path, error.message().c_str()));
  }
  return path;
}

AString ReadGroup(const char* key, const AString& path) {
  std::error_code error;
  if (!path.IsEmpty() && path[0] != L'/') {
    Refuse(key, AString("\"%1\" is not an absolute path").Arg(path));
  }
  if (!path.IsEmpty() && !std::filesystem::is_directory(path.ToUtf8(), error)) {
    Refuse(key, AString("there is no directory %1").Arg(path));
  }
  return path;
}

long Number(const char* key, long fallback, long least, long most) {
  const AString text = Value(key, AString().SetNum(fallback, 'd'));
  const long number = text.ToLong();
  if (number < least || number > most || AString().SetNum(number, 'd') != text) {
    Refuse(key, AString("\"%1\" is not a number from %2 to %3")
                    .Arg(text, AString().SetNum(least, 'd'), AString().SetNum(most, 'd')));
  }
  return number;
}

bool YesOrNo(const char* key, bool fallback) {
  const AString text = Value(key, fallback ? "yes" : "no");
  if (text != AString("yes") && text != AString("no")) {
    Refuse(key, AString("\"%1\" is neither yes nor no").Arg(text));
  }
  return text == AString("yes");
}

unsigned long RunsThatFit() {
  const unsigned long limit = BaseSDK::ADescriptorLimit::Current();
  return limit > DescriptorsOfAgent
             ? (limit - DescriptorsOfAgent) / HandlerSettings::DescriptorsPerRun
             : 0;
}

long ReadMaxRuns() {
  const char* const key = "max_runs";
  const long fit = static_cast<long>(std::max(1UL, RunsThatFit()));
  const long runs = Number(key, std::min(MaxRuns, fit), 1, MaxMaxRuns);
  if (runs > fit) {
    Refuse(key,
           AString("%1 runs do not fit into %2 file descriptors: a run takes %3, and the agent "
                   "needs some itself; %4 at most, or raise the limit (LimitNOFILE= of the "
                   "service)")
               .Arg(AString().SetNum(runs, 'd'),
                    AString().SetNum(BaseSDK::ADescriptorLimit::Current(), 'u'),
                    AString().SetNum(HandlerSettings::DescriptorsPerRun, 'u'),
                    AString().SetNum(fit, 'd')));
  }
  return runs;
}

// Not all systems have it; a machine without one has no name here.
std::string MachineId() {
  std::ifstream file("/etc/machine-id");
  std::string id;
  (void)std::getline(file, id);
  return id;
}

AString SchedulerClassId() {
  const char* const key = "scheduler_class_id";
  const AString text = Value(key, NoxAgent::SchedulerClassId);
  if (!BaseSDK::AGuid(text).IsValid()) {
    Refuse(key, AString("\"%1\" is not a class identifier, such as %2")
                    .Arg(text, NoxAgent::SchedulerClassId));
  }
  return text;
}

}  // namespace

HandlerSettings ReadHandlerSettings() {
  // All keys are read before any is judged: the agent takes one that was not asked for as unknown.
  const AString jobPath = Value("job_path");
  const AString outputPath = Value("output_path");
  const AString recordPath = Value("record_path");
  const AString groupPath = Value("cgroup_path");
  const long grace = Number("kill_grace_seconds", KillGraceSeconds, 0, MaxGraceSeconds);
  const long maxRuns = ReadMaxRuns();
  HandlerSettings settings;
  settings.m_LogOutput = YesOrNo("job_output", settings.m_LogOutput);
  settings.m_SchedulerClassId = SchedulerClassId();
  settings.m_MachineId = MachineId();
  settings.m_KillGrace = std::chrono::seconds(grace);
  settings.m_MaxRuns = static_cast<std::size_t>(maxRuns);
  settings.m_JobPath = ReadDirectory("job_path", jobPath);
  settings.m_OutputPath = ReadDirectory("output_path", outputPath);
  settings.m_RecordPath = ReadDirectory(
      "record_path", recordPath.IsEmpty() ? settings.m_OutputPath + "/.running" : recordPath);
  settings.m_GroupPath = ReadGroup("cgroup_path", groupPath);
  return settings;
}

}  // namespace NoxHandler
