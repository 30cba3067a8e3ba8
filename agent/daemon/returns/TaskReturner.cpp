#include "agent/daemon/returns/TaskReturner.h"

#include "agent/daemon/process/AgentLog.h"
#include "agent/daemon/returns/SchedulerTasks.h"

#include <algorithm>

using BaseSDK::ALogger;
using BaseSDK::AMutexGuard;
using BaseSDK::AString;

namespace NoxAgent {
namespace {

constexpr const char* TaskReturnerSource = "TaskReturner";
// Until what could not be enabled is tried again.
constexpr unsigned long RetryMilliseconds = 1000;
// Each is a write to the disk, and the thread has signals and the service manager to answer.
constexpr std::size_t MostAtOnce = 50;

}  // namespace

TaskReturner::TaskReturner(const Plugins& plugins, const TaskStore& store, TaskReturns& returns)
    : m_Plugins(plugins), m_Store(store), m_Returns(returns) {}

void TaskReturner::EnableDue(long now) {
  const auto scheduler = m_Plugins.Find(m_Store.Scheduler());
  const bool isReady = scheduler != nullptr && m_Store.Files() != nullptr &&
                       m_Store.Files()->Readings().Next().has_value();
  if (!isReady || m_Returns.Due(now).empty()) {
    return;
  }
  try {
    EnableAllDue(now, *scheduler);
  } catch (const std::exception& error) {
    ALOG(AgentLog(), ALogger::Error, TaskReturnerSource,
         AString("Cannot enable the tasks that are to come back: %1").Arg(error.what()));
  }
}

// Asked again under the lock: a client may have said something else of them since.
void TaskReturner::EnableAllDue(long now, Plugin& scheduler) {
  AMutexGuard guard(m_Returns.ChangeLock());
  TaskReturns::Ids due = m_Returns.Due(now);
  if (due.size() > MostAtOnce) {
    // The next ones at the next turn, so that none waits for others that cannot be enabled.
    m_Turn = (m_Turn + MostAtOnce) % due.size();
    (void)std::rotate(due.begin(), due.begin() + static_cast<std::ptrdiff_t>(m_Turn), due.end());
    due.resize(MostAtOnce);
  }
  TaskReturns::Ids done;
  for (const std::string& id : due) {
    if (Enable(scheduler, id)) {
      done.push_back(id);
    }
  }
  m_Returns.Cancel(done);
}

// Whether that is done with. What the file says counts: the task in memory goes with the agent.
bool TaskReturner::Enable(Plugin& scheduler, const std::string& taskId) const {
  const AString id = AString::FromUtf8(taskId);
  try {
    SwitchTask(scheduler, *m_Store.Files(), id, true);
    const std::optional<bool> isEnabled = IsEnabledOnDisk(scheduler, id);
    if (isEnabled.value_or(false)) {
      ALOG(AgentLog(), ALogger::Notice, TaskReturnerSource,
           AString("The task %1 is enabled again: the time for which it was disabled is over")
               .Arg(id));
    }
    return isEnabled.value_or(true);
  } catch (const std::exception& error) {
    ALOG(AgentLog(), ALogger::Debug, TaskReturnerSource,
         AString("The task %1 cannot be enabled yet: %2").Arg(id, error.what()));
    return false;
  }
}

unsigned long TaskReturner::Pause(long now, unsigned long most) const {
  const std::optional<long> next = m_Returns.Next();
  if (!next.has_value()) {
    return most;
  }
  if (*next <= now) {
    return std::min(most, RetryMilliseconds);
  }
  const auto seconds = static_cast<unsigned long>(*next - now);
  return seconds < most / 1000 ? seconds * 1000 : most;
}

}  // namespace NoxAgent
