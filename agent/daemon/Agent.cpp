#include "agent/daemon/Agent.h"

#include "agent/daemon/AgentError.h"
#include "agent/daemon/BuildInfo.h"
#include "agent/daemon/control/StatusReport.h"
#include "agent/daemon/process/AgentLog.h"
#include "agent/daemon/process/Directories.h"
#include "agent/daemon/process/LogSetup.h"
#include "agent/library/Json.h"

#include <algorithm>
#include <ctime>

using BaseSDK::ALogger;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* AgentSource = "Agent";
constexpr unsigned RuntimeMode = 0755;  // the socket has its own mode
constexpr unsigned long HousekeepingMilliseconds = 5000;

long Now() {
  return static_cast<long>(std::time(nullptr));
}

}  // namespace

Agent::Locks::Locks(const Settings& settings) {
  Directories::Make(settings.m_StateDir, Directories::Private);
  m_State.emplace(settings.m_StateDir);
  Directories::Make(settings.m_RuntimeDir, RuntimeMode);
  if (settings.m_RuntimeDir != settings.m_StateDir) {
    m_Runtime.emplace(settings.m_RuntimeDir);
  }
}

Agent::Agent(const Options& options, Environment environment, Settings settings)
    : m_Options(options),
      m_Environment(std::move(environment)),
      m_Settings(std::move(settings)),
      m_StartTime(Now()),
      m_ServiceManager(m_Environment),
      m_Locks(m_Settings),
      m_Socket(m_Settings.SocketPath(), m_Settings.m_SocketGroup),
      m_Returns([this] { m_Signals.Wake(); }),
      m_Notifications(m_Thread, m_Plugins),
      m_Host(m_Settings, m_Plugins, m_Notifications, m_HandlerCalls),
      m_Lifecycle(m_Plugins, m_Notifications, m_Host, m_HandlerCalls, m_Handles, m_Store),
      m_Operations(m_Plugins, m_Notifications, m_Handles, m_Store, m_Returns),
      m_Files(m_Store, m_Operations),
      m_Tasks(m_Plugins, m_Store, m_Operations, m_Returns),
      m_Disable(m_Plugins, m_Store, m_Returns),
      m_Returner(m_Plugins, m_Store, m_Returns),
      m_Api(m_Operations, m_Files, m_Tasks, m_Disable, m_Notifications,
            {[this](bool withTasks) { return Status(withTasks); }, [this] { return Refresh(); }}) {}

bool Agent::Run() {
  try {
    Start();
  } catch (const std::exception& error) {
    if (m_Lifecycle.UnloadAll()) {
      throw;
    }
    ALOG(AgentLog(), ALogger::Error, AgentSource, AString("Cannot start: ") + error.what());
    return false;
  }
  Serve();
  return Stop();
}

void Agent::Start() {
  ALOG(AgentLog(), ALogger::Information, AgentSource,
       AString("noxagentd %1 starts; state in %2").Arg(AgentVersion, m_Settings.m_StateDir));
  Directories::Make(m_Settings.m_StateDir + "/var", Directories::Private);
  m_Returns.Open((m_Settings.m_StateDir + "/var/returns").ToUtf8());
  m_Lifecycle.LoadAll(m_Settings);
  m_Server = std::make_unique<ControlServer>(
      m_Socket.Fd(), PeerCheck(m_Socket.Group(), m_Settings.m_GroupWritesJobs), m_Api,
      m_Notifications);
  m_Server->Start();  // only now: a request for the status reads m_Server
  ALOG(AgentLog(), ALogger::Information, AgentSource,
       AString("Serving requests on %1").Arg(m_Settings.SocketPath()));
  m_ServiceManager.Ready();
}

void Agent::Serve() {
  const unsigned long pause =
      std::min(HousekeepingMilliseconds,
               m_ServiceManager.KeepAliveInterval().value_or(HousekeepingMilliseconds));
  SignalInbox::Request request{};
  for (;;) {
    m_Returner.EnableDue(Now());
    if (m_Signals.Wait(m_Returner.Pause(Now(), pause), request)) {
      if (request == SignalInbox::Request::Stop) {
        return;
      }
      try {
        (void)Refresh();
      } catch (const AgentError&) {
        // Logged already; the agent goes on as it is.
      }
    }
    m_Handles.CloseIdle(EnumerationHandles::Clock::now());
    // Sent on the agent thread: if a plug-in keeps that thread busy for good, no sign of life goes
    // out, and the service manager's watchdog acts.
    (void)m_Thread.Post([this] { m_ServiceManager.KeepAlive(); });
  }
}

bool Agent::Stop() {
  ALOG(AgentLog(), ALogger::Information, AgentSource, "Stopping");
  m_ServiceManager.Stopping();
  if (!m_Server->Stop(PluginLifecycle::DrainMilliseconds)) {
    ALOG(AgentLog(), ALogger::Error, AgentSource,
         "A request has not come back in time: ending without unloading the plug-ins");
    return false;
  }
  m_Server.reset();
  return m_Lifecycle.UnloadAll();
}

SettingChanges Agent::Refresh() {
  AMutexGuard guard(m_RefreshLock);
  ALOG(AgentLog(), ALogger::Information, AgentSource, "Refreshing");
  m_ServiceManager.Reloading();
  SettingChanges changes;
  try {
    m_Lifecycle.Refresh([&] { changes = ReadConfigurationAgain(); });
  } catch (const AgentError& error) {
    m_ServiceManager.Ready();
    ALOG(AgentLog(), ALogger::Error, AgentSource,
         AString("The configuration stays as it was: %1").Arg(error.what()));
    throw;
  }
  m_ServiceManager.Ready();
  for (const auto& plugin : m_Plugins.All()) {
    for (SettingChange& change : plugin->Config().NotInForce()) {
      change.m_Name = plugin->Config().FileName() + ": " + change.m_Name;
      changes.push_back(change);
    }
  }
  for (const SettingChange& change : changes) {
    ALOG(AgentLog(), ALogger::Warning, AgentSource,
         AString("The setting %1 is changed from \"%2\" to \"%3\", which takes effect at the next "
                 "start")
             .Arg(change.m_Name, change.m_Old, change.m_New));
  }
  return changes;
}

SettingChanges Agent::ReadConfigurationAgain() {
  const Settings settings = Settings::Load(m_Options, m_Environment);
  LogSetup::SetLevels(settings.m_Log);
  return FindRestartChanges(m_Settings, settings);
}

Json Agent::Status(bool withTasks) const {
  const StatusReport report{m_Settings, m_Plugins, m_Notifications,
                            m_Handles,  m_Store,   m_StartTime};
  return report.Make(m_Server->Count(), withTasks);
}

}  // namespace NoxAgent
