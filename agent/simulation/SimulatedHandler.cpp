#include "agent/simulation/SimulatedHandler.h"

#include <BaseSDK/ALong32.h>
#include <BaseSDK/AStringTokenizer.h>
#include <BaseSDK/AUrl.h>
#include <VirtualTime/VirtualClock.h>

#include <utility>

namespace NoxAgent {

using BaseSDK::AMutexGuard;
using BaseSDK::AString;
using BaseSDK::AStringTokenizer;
using Corvane::AgentInterfacesV3::TASK_HANDLER_DECLINED;
using VirtualTime::VirtualClock;
using Kind = SimulationEvent::Kind;

namespace {

constexpr const char* Ok = "Ok";
constexpr const char* Failed = "Failed";

bool Flag(const AStringTokenizer& fields, std::size_t index) {
  return fields.Token(index) == AString("1");
}

}  // namespace

SimulatedHandler::SimulatedHandler(SimulationLog& log, std::optional<long> runSeconds,
                                   std::vector<long> failAt, Reporter report)
    : m_Log(log),
      m_RunSeconds(runSeconds.value_or(0)),
      m_Accepts(!runSeconds && failAt.empty()),
      m_Report(std::move(report)),
      m_FailAt(failAt.begin(), failAt.end()) {}

long SimulatedHandler::RunTasks(const AString& batch) {
  return RunTasksEx(batch);
}

long SimulatedHandler::RunTasksEx(const AString& batch) {
  const AStringTokenizer entries(batch, ";");
  for (std::size_t i = 0; i < entries.Count(); ++i) {
    Take(entries.Token(i));
  }
  return m_Accepts ? 1 : TASK_HANDLER_DECLINED;
}

void SimulatedHandler::Take(const AString& entry) {
  const AStringTokenizer fields(entry, ":", 1);
  SimulationEvent event;
  event.m_Task = BaseSDK::AUrl::Decode(fields.Token(0)).ToUtf8();
  event.m_Late = Flag(fields, 1);
  event.m_NeverRun = Flag(fields, 2);
  event.m_KillAtEnd = Flag(fields, 3);
  if (m_Accepts) {
    event.m_State = Ok;
  }
  {
    const AMutexGuard guard(m_Lock);
    if (m_Running.count(event.m_Task) > 0) {
      event.m_Kind = Kind::StillRunning;
    }
  }
  const bool begins = event.m_Kind == Kind::Run;
  const std::string task = event.m_Task;
  m_Log.Add(std::move(event));
  if (begins && !m_Accepts) {
    Begin(task);
  }
}

void SimulatedHandler::Begin(const std::string& task) {
  const long now = VirtualClock::Instance().Now();
  const AMutexGuard guard(m_Lock);
  m_Running.insert(task);
  const char* const state = Fails(now) ? Failed : Ok;
  // Also a run without duration ends there: the scheduler must have got its answer before.
  VirtualClock::Instance().At(BaseSDK::Add32(now, m_RunSeconds),
                              [this, task, state] { End(task, state); });
}

void SimulatedHandler::End(const std::string& task, const std::string& state) {
  {
    const AMutexGuard guard(m_Lock);
    m_Running.erase(task);
  }
  SimulationEvent event;
  event.m_Kind = Kind::Finished;
  event.m_Task = task;
  event.m_State = state;
  m_Log.Add(std::move(event));
  m_Report(task, state);
}

// One failure is used up by one run.
bool SimulatedHandler::Fails(long now) {
  const auto first = m_FailAt.begin();
  if (first == m_FailAt.end() || *first > now) {
    return false;
  }
  m_FailAt.erase(first);
  return true;
}

}  // namespace NoxAgent
