#include "agent/client/RunWatcher.h"

#include <algorithm>

namespace NoxAgent {

namespace {

using Clock = RunWatcher::Clock;

constexpr const char* StartedState = "Started";

// The document knows whole seconds alone.
std::optional<Clock::time_point> WrittenStart(const RunEntry& run) {
  if (run.m_Seconds == -1) {
    return std::nullopt;
  }
  return Clock::time_point(std::chrono::seconds(run.m_Seconds));
}

RunEvent StartedAt(Clock::time_point time, const std::string& task, RunEntry run) {
  run.m_State = StartedState;
  return {RunEvent::Kind::Started, task, time, std::move(run), std::nullopt};
}

RunEvent FinishedAt(Clock::time_point time, const std::string& task, const RunEntry& run,
                    std::optional<Clock::time_point> start) {
  RunEvent event{RunEvent::Kind::Finished, task, time, run, std::nullopt};
  if (start) {
    event.m_Took = std::max(std::chrono::milliseconds(0),
                            std::chrono::duration_cast<std::chrono::milliseconds>(time - *start));
  }
  return event;
}

}  // namespace

void RunWatcher::Know(const std::string& task, const TaskGlance& document) {
  if (const auto run = ReadRunEntry(document)) {
    m_Known[task] = {*run, std::nullopt};
  }
}

std::vector<RunEvent> RunWatcher::Changed(const std::string& task, const TaskGlance& document,
                                          Clock::time_point now) {
  const auto run = ReadRunEntry(document);
  if (!run) {
    return {};
  }
  const auto known = m_Known.find(task);
  const bool isSameStart = known != m_Known.end() && known->second.m_Run.m_Start == run->m_Start;
  if (isSameStart && known->second.m_Run == *run) {
    return {};
  }

  if (run->m_State == StartedState) {
    m_Known[task] = {*run, now};
    return {StartedAt(now, task, *run)};
  }
  const auto written = WrittenStart(*run);
  std::vector<RunEvent> events;
  if (!isSameStart) {
    events.push_back(StartedAt(std::min(now, written.value_or(now)), task, *run));
  }
  const auto seen = isSameStart ? known->second.m_SeenToStart : std::nullopt;
  events.push_back(FinishedAt(now, task, *run, seen ? seen : written));
  m_Known[task] = {*run, std::nullopt};
  return events;
}

}  // namespace NoxAgent
