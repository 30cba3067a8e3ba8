// The agent's notifications and the processing gate.
#include "Common/Notifications.h"

#include "Common/Log.h"
#include "scheduler/TaskSchedulerObject.h"

using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace {

/// What the agent tells its plug-ins; other kinds mean nothing to the scheduler.
enum NotificationKind : long {
  AgentStarted = 0,
  PolicyRefreshStarted = 1,
  PolicyRefreshFinished = 2,
  RegistrationStarted = 4,
  RegistrationFinished = 5,
  UnregistrationStarted = 6,
  UnregistrationFinished = 7,
  SubscribedNotification = 10,
};

AString Decimal(std::uint32_t count) {
  return AString().SetNum(static_cast<unsigned>(count), 'u');
}

}  // namespace

int TaskSchedulerObject_i::NotifyObject(long kind, long code, const AString& text) {
  switch (kind) {
    case AgentStarted:
      OpenGateAfter(L"Agent Startup finished. Enabling task processing");
      break;
    case PolicyRefreshStarted:
      CloseGateForPolicyRefresh();
      break;
    case PolicyRefreshFinished:
      OpenGateAfter(L"Policy Refresh finished. Enabling task processing");
      break;
    case RegistrationStarted:
      BeginInstallTask(L"Started plugin %1 registration", text);
      break;
    case RegistrationFinished:
      EndInstallTask(L"Finished plugin %1 registration", text);
      break;
    case UnregistrationStarted:
      BeginInstallTask(L"Started plugin %1 unregistration", text);
      break;
    case UnregistrationFinished:
      EndInstallTask(L"Finished plugin %1 unregistration", text);
      break;
    case SubscribedNotification:
      RecordNotification(code, text);
      break;
    default:
      break;
  }
  return 0;
}

bool TaskSchedulerObject_i::IsProcessingEnabled() const {
  return m_ProcessingEnabled.load(std::memory_order_relaxed);
}

void TaskSchedulerObject_i::OpenGate() {
  m_ProcessingEnabled.store(true, std::memory_order_relaxed);
}

void TaskSchedulerObject_i::CloseGate() {
  m_ProcessingEnabled.store(false, std::memory_order_relaxed);
}

void TaskSchedulerObject_i::OpenGateAfter(const wchar_t* message) {
  // Kept on purpose: opens whatever the install task count says. The end of the agent's start-up or
  // of a policy refresh takes precedence over plug-ins that are still being installed.
  OpenGate();
  PLUGIN_LOG(Scheduler, Trace, message);
  m_MonitorThread.Rouse();
}

void TaskSchedulerObject_i::CloseGateForPolicyRefresh() {
  PLUGIN_LOG(Scheduler, Trace,
             L"Policy Refresh Started. Task processing is disabled until policy refresh is "
             L"complete");
  CloseGate();
}

void TaskSchedulerObject_i::BeginInstallTask(const wchar_t* message, const AString& plugin) {
  AMutexGuard guard(m_CountLock);
  ++m_InstallTaskCount;
  CloseGate();
  PLUGIN_LOG(Scheduler, Trace, AString(message).Arg(plugin));
  PLUGIN_LOG(Scheduler, Information,
             AString(L"Number of Install/Uninstall tasks: %1. Task processing is disabled")
                 .Arg(Decimal(m_InstallTaskCount)));
}

void TaskSchedulerObject_i::EndInstallTask(const wchar_t* message, const AString& plugin) {
  AMutexGuard guard(m_CountLock);
  // Kept on purpose: a finish without a start wraps to 4294967295, and only as many more of them,
  // or the agent's own notifications, open the gate again.
  --m_InstallTaskCount;
  PLUGIN_LOG(Scheduler, Trace, AString(message).Arg(plugin));
  if (m_InstallTaskCount != 0) {
    PLUGIN_LOG(Scheduler, Information,
               AString(L"Number of Install/Uninstall tasks: %1. Task processing remains disabled")
                   .Arg(Decimal(m_InstallTaskCount)));
    return;
  }
  PLUGIN_LOG(Scheduler, Trace, L"Enabling task processing");
  OpenGate();
  m_MonitorThread.Rouse();
}

void TaskSchedulerObject_i::RecordNotification(long code, const AString& text) {
  if (code != Nox::FirstEvent && code != Nox::SecondEvent) {
    return;
  }
  PLUGIN_LOG(
      Scheduler, Trace,
      AString(L"Received %1 subscribed notification: %2").Arg(AString().SetNum(code, 'd'), text));
  AMutexGuard guard(m_StateLock);
  (code == Nox::FirstEvent ? m_Notification302 : m_Notification300) = true;
  m_MonitorThread.Rouse();
}
