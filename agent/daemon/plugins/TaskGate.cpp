#include "agent/daemon/plugins/TaskGate.h"

#include "agent/daemon/plugins/NotificationCenter.h"

using BaseSDK::AString;

namespace NoxAgent {

std::optional<TaskGate::Change> TaskGate::After(long kind, const AString& text) {
  switch (kind) {
    case NotificationCenter::StartUpFinished:
      return Open("all plug-ins are loaded");
    case NotificationCenter::RefreshStarted:
      return Close("a policy refresh has started");
    case NotificationCenter::RefreshFinished:
      return Open("the policy refresh is over");
    case NotificationCenter::RegistrationStarted:
      return Begin(AString("the plug-in %1 is being loaded").Arg(text));
    case NotificationCenter::RegistrationFinished:
      return End("all plug-ins are loaded");
    case NotificationCenter::UnregistrationStarted:
      return Begin(AString("the plug-in %1 is being unloaded").Arg(text));
    case NotificationCenter::UnregistrationFinished:
      return End("no plug-in is being unloaded any more");
    default:
      return std::nullopt;
  }
}

std::optional<TaskGate::Change> TaskGate::Open(const AString& why) {
  if (m_MayRun == true) {
    return std::nullopt;
  }
  m_MayRun = true;
  return Change{true, "Tasks may run: " + why};
}

std::optional<TaskGate::Change> TaskGate::Close(const AString& why) {
  if (m_MayRun == false) {
    return std::nullopt;
  }
  m_MayRun = false;
  return Change{false, "Tasks are held back: " + why};
}

std::optional<TaskGate::Change> TaskGate::Begin(const AString& why) {
  ++m_UnderWay;
  return Close(why);
}

std::optional<TaskGate::Change> TaskGate::End(const AString& why) {
  --m_UnderWay;
  return m_UnderWay == 0 ? Open(why) : std::nullopt;
}

}  // namespace NoxAgent
