#include "agent/handler/task/StateReporter.h"

#include "agent/handler/Log.h"

#include <AgentInterfacesV3/CIClient.h>
#include <AgentInterfacesV3/CIGetObjectInterface.h>
#include <AgentInterfacesV3/INoxTaskScheduler.h>

#include <algorithm>

using BaseSDK::ALogger;
using BaseSDK::AString;
using Corvane::AgentInterfacesV3::CALL_NOT_DELIVERED;
using Corvane::AgentInterfacesV3::CIClient;
using Corvane::AgentInterfacesV3::CIGetObjectInterface;
using Corvane::AgentInterfacesV3::INoxTaskScheduler;

namespace NoxHandler {

void StateReporter::Report(const AString& taskId, const AString& state) {
  const auto now = Clock::now();
  m_Kept[taskId] = {state, now + KeepFor, now};
  Retry();
}

void StateReporter::Retry() {
  const auto now = Clock::now();
  for (auto it = m_Kept.begin(); it != m_Kept.end();) {
    auto& [taskId, report] = *it;
    if (report.m_NextTry > now) {
      ++it;
      continue;
    }
    const Answer answer = Tell(taskId, report.m_State);
    report.m_NextTry = now + TryEvery;
    if (answer == Answer::NotNow && now < report.m_GiveUp) {
      ++it;
      continue;
    }
    if (answer != Answer::Taken) {
      ALOG(HandlerLog(), answer == Answer::TaskGone ? ALogger::Debug : ALogger::Warning,
           HandlerSource,
           AString("The scheduler did not take the state '%1' of task '%2'")
               .Arg(report.m_State, taskId));
    }
    it = m_Kept.erase(it);
  }
}

std::optional<StateReporter::Clock::time_point> StateReporter::NextTry() const {
  std::optional<Clock::time_point> next;
  for (const auto& [taskId, report] : m_Kept) {
    next = next ? std::min(*next, report.m_NextTry) : report.m_NextTry;
  }
  return next;
}

AString StateReporter::TaskXml(const AString& taskId) const {
  CIClient<INoxTaskScheduler> scheduler;
  AString xml;
  if (CIGetObjectInterface(m_SchedulerClassId, INoxTaskScheduler::GetIID(), 0, scheduler.Slot()) <
          0 ||
      scheduler->GetTaskXML(taskId, xml) < 1) {
    return AString();
  }
  return xml;
}

StateReporter::Answer StateReporter::Tell(const AString& taskId, const AString& state) const {
  CIClient<INoxTaskScheduler> scheduler;
  if (CIGetObjectInterface(m_SchedulerClassId, INoxTaskScheduler::GetIID(), 0, scheduler.Slot()) <
      0) {
    return Answer::NotNow;
  }
  const long result = scheduler->SetRunState(taskId, state);
  if (result == 0) {
    return Answer::Taken;
  }
  AString xml;
  const bool isStored = scheduler->GetTaskXML(taskId, xml) >= 1;
  return result == CALL_NOT_DELIVERED || isStored ? Answer::NotNow : Answer::TaskGone;
}

}  // namespace NoxHandler
