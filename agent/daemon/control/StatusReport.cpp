#include "agent/daemon/control/StatusReport.h"

#include "agent/daemon/BuildInfo.h"
#include "agent/daemon/control/ReplyValue.h"
#include "agent/daemon/control/SchedulerReport.h"
#include "agent/library/Json.h"

#include <BaseSDK/ASystemZone.h>

#include <unistd.h>

#include <algorithm>
#include <ctime>

using BaseSDK::AString;
using Corvane::AgentInterfacesV3::AMsgIn;
using Corvane::AgentInterfacesV3::AMsgReply;
namespace NoxAgent {
namespace {

std::string ReportOf(Plugin& plugin) {
  AMsgReply reply;
  plugin.Send(AMsgIn("INoxObject", "ObjectDebugInfo", reply));
  return Out<AString>(reply, "report").ToUtf8();
}

Json Describe(Plugin& plugin, const std::string& report) {
  Json interfaces = Json::List{};
  for (const auto* const table : plugin.Interfaces()) {
    interfaces.Append(table->m_Name);
  }
  const PluginSettings& settings = plugin.Settings();
  return {{"name", settings.m_Name.ToUtf8()},
          {"path", settings.m_Path.ToUtf8()},
          {"config", settings.m_ConfigFile.ToUtf8()},
          {"classId", settings.m_ClassId.ToUtf8()},
          {"interfaces", interfaces},
          {"requests", plugin.Requests()},
          {"errors", plugin.Errors()},
          {"notifications", plugin.Notifications()},
          {"report", report}};
}

Json Describe(const JournaledFiles::Counts& counts) {
  return {{"written", counts.m_Replaced},
          {"flushes", counts.m_Flushes},
          {"journalBytes", counts.m_JournalBytes}};
}

Json Describe(const SchedulerReport& report, bool withTasks) {
  Json tasks = {{"loaded", report.m_TaskIds.size()}};
  if (withTasks) {
    tasks["ids"] = report.m_TaskIds;
  }
  return tasks;
}

}  // namespace

Json StatusReport::Make(const ControlServer::Counters& counters, bool withTasks) const {
  Json plugins = Json::List{};
  Json tasks = Json::Object{};
  for (const auto& plugin : m_Plugins.All()) {
    const std::string whole = ReportOf(*plugin);
    const SchedulerReport report(whole);
    plugins.Append(Describe(*plugin, withTasks ? whole : report.m_Rest));
    if (report.m_IsOne) {
      tasks = Describe(report, withTasks);
    }
  }
  // The wall clock may have been set back since.
  const long uptime = std::max(0L, static_cast<long>(std::time(nullptr)) - m_StartTime);
  Json status = {
      {"version", AgentVersion},
      {"pid", ::getpid()},
      {"startTime", m_StartTime},
      {"uptime", uptime},
      {"config", m_Settings.m_ConfigFile.ToUtf8()},
      {"stateDir", m_Settings.m_StateDir.ToUtf8()},
      {"runtimeDir", m_Settings.m_RuntimeDir.ToUtf8()},
      {"socket", m_Settings.SocketPath().ToUtf8()},
      {"requests", counters.m_Requests},
      {"errors", counters.m_Errors},
      {"connections", counters.m_Connections},
      {"streams", counters.m_Streams},
      {"droppedStreams", counters.m_Dropped},
      {"enumerations", m_Handles.Count()},
      {"notifications", m_Notifications.Posted()},
      {"refusedFiles", m_Store.Files() != nullptr ? m_Store.Files()->Refused().Count() : 0},
      {"taskFiles", Describe(m_Store.Counts())},
      {"zone", BaseSDK::ASystemZone::Value().ToUtf8()},
      {"zoneName", BaseSDK::ASystemZone::Name().ToUtf8()},
      {"tasks", tasks},
      {"plugins", plugins}};
  const auto nextReading =
      m_Store.Files() != nullptr ? m_Store.Files()->Readings().Next() : std::nullopt;
  if (nextReading.has_value()) {
    status["nextReading"] = *nextReading;
  }
  return status;
}

}  // namespace NoxAgent
