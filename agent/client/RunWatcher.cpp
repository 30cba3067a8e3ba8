#include "agent/client/RunWatcher.h"

#include <algorithm>

namespace NoxAgent {

namespace {

constexpr const char* kStarted = "Started";

}  // namespace

void RunWatcher::Know(const std::string& task, const std::string& taskXml) {
  if (const auto run = ReadRunEntry(taskXml)) m_Known[task] = {*run, std::nullopt};
}

std::optional<RunEvent> RunWatcher::Changed(const std::string& task, const std::string& taskXml,
                                            Clock::time_point now) {
  const auto run = ReadRunEntry(taskXml);
  const auto known = m_Known.find(task);
  if (!run || (known != m_Known.end() && known->second.m_Run == *run)) return std::nullopt;

  RunEvent event{RunEvent::Kind::Started, task, now, *run, std::nullopt};
  if (run->m_State == kStarted) {
    m_Known[task] = {*run, now};
    return event;
  }
  event.m_Kind = RunEvent::Kind::Finished;
  const bool sawStart = known != m_Known.end() && known->second.m_Run.m_Start == run->m_Start &&
                        known->second.m_SeenToStart;
  // The document knows whole seconds alone.
  std::optional<Clock::time_point> start;
  if (sawStart)
    start = known->second.m_SeenToStart;
  else if (run->m_Seconds != -1)
    start = Clock::time_point(std::chrono::seconds(run->m_Seconds));
  if (start)
    event.m_Took = std::max(std::chrono::milliseconds(0),
                            std::chrono::duration_cast<std::chrono::milliseconds>(now - *start));
  m_Known[task] = {*run, std::nullopt};
  return event;
}

}  // namespace NoxAgent
