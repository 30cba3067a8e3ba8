#include "agent/client/LiveTask.h"

#include "agent/client/LocalTime.h"
#include "agent/document/TaskGlance.h"

#include <BaseSDK/ALong32.h>
#include <BaseSDK/AString.h>

#include <algorithm>
#include <ctime>

namespace NoxAgent {

using BaseSDK::AString;

namespace {

// The last line of the scheduler's report on itself says whether it runs tasks.
LiveTask::Gate GateOf(const Json& status) {
  for (const Json& plugin : status.Items("plugins")) {
    const std::string report = plugin.Text("report", "");
    if (report.find("Task processing is enabled.") != std::string::npos) {
      return LiveTask::Gate::Open;
    }
    if (report.find("Task processing is disabled.") != std::string::npos) {
      return LiveTask::Gate::Closed;
    }
  }
  return LiveTask::Gate::Assumed;
}

std::optional<long> ReadingOf(const Json& status) {
  const Json* const reading = status.Find("nextReading");
  return reading == nullptr ? std::nullopt : std::optional(reading->Long());
}

void SetZone(LiveTask& task, const Json& status) {
  task.m_Zone = status.Text("zone", "");
  task.m_ZoneName = status.Text("zoneName", task.m_Zone);
}

}  // namespace

std::string LiveTask::ReadingText() const {
  return m_Reading ? "at " + LocalTimeText(*m_Reading) : "within the hour";
}

std::optional<long> LiveTask::Return() const {
  if (m_Returns <= 0 || (m_Memory && m_Memory->m_Enabled)) {
    return std::nullopt;
  }
  // The agent goes on trying when it cannot enable the task at its moment.
  const long earliest = m_Memory ? m_AskedAt : m_Reading.value_or(m_AskedAt);
  return std::max(m_Returns, earliest);
}

std::string LiveTask::DisabledText() const {
  const auto until = Return();
  return until
             ? "The task is disabled until " + LocalTimeText(*until) + ": until then nothing runs."
             : "The task is disabled: until it is enabled nothing runs.";
}

Json ReturnJson(const std::optional<LiveTask>& task) {
  return MomentOrNull(task ? task->Return().value_or(0) : 0);
}

LiveTask ReadLiveTask(AgentApi& agent, const std::string& id) {
  LiveTask task;
  task.m_AskedAt = std::time(nullptr);
  const Json status = agent.Status();
  task.m_Gate = GateOf(status);
  SetZone(task, status);
  task.m_Reading = ReadingOf(status);
  task.m_Run = ReadHandlerRun(agent.LatestRun(id));
  task.m_Returns = agent.ReturnOf(id);
  if (const auto report = agent.TaskAttributes(id)) {
    task.m_Memory = {AttributeNumber(*report, "t3", -1), AttributeNumber(*report, "t5", -1) != 0,
                     task.IsRunning()};
  }
  return task;
}

std::optional<LiveTask> ReadAgentsZone(AgentApi& agent, bool mayBeAway) {
  try {
    LiveTask task;
    SetZone(task, agent.Status());
    return task;
  } catch (const CommandError& error) {
    if (mayBeAway && error.Code() == ExitCode::Unreachable) {
      return std::nullopt;
    }
    throw;
  }
}

void BeginAsAgent(const LiveTask& task, long moment, SimulationRequest& request) {
  const long now = task.m_AskedAt;
  if (!task.m_Memory) {
    request.m_From = std::max(moment, task.m_Reading.value_or(moment));
    return;
  }
  if (moment < now) {
    request.m_From = moment;
    return;
  }
  request.m_From = now;
  request.m_Documents.at(0).m_Memory = task.m_Memory;
  if (task.m_Reading) {
    request.m_Reading =
        std::clamp(*task.m_Reading, now, BaseSDK::Add32(now, SimulationRequest::CycleSeconds));
  }
  if (moment > now) {
    request.m_Moment = moment;
  }
}

void BeginAtReturn(const LiveTask& task, long moment, SimulationRequest& request) {
  constexpr long Cycle = SimulationRequest::CycleSeconds;
  SimulationRequest::Document& document = request.m_Documents.at(0);
  const long begin = task.Return().value();
  request.m_From = begin;
  if (moment > begin) {
    request.m_Moment = moment;
  }
  document.m_Xml = EnabledDocument(AString::FromUtf8(document.m_Xml)).ToUtf8();
  if (!task.m_Memory) {
    return;
  }
  const long reading = task.m_Reading.value_or(BaseSDK::Add32(task.m_AskedAt, Cycle));
  const long missed = reading < begin ? (begin - reading + Cycle - 1) / Cycle : 0;
  request.m_Reading =
      std::min(BaseSDK::Add32(reading, missed * Cycle), BaseSDK::Add32(begin, Cycle));
  // A reading leaves nothing of what is in memory alone.
  if (missed == 0 || task.IsRunning()) {
    document.m_Memory = task.m_Memory;
    document.m_Memory->m_Enabled = true;
  }
}

}  // namespace NoxAgent
