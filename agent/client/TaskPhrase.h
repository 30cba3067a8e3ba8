#pragma once

#include "agent/client/LiveTask.h"
#include "agent/schedule/LocalCalendar.h"

#include <optional>
#include <string>
#include <vector>

namespace NoxAgent {

/// What a task does from now on, in the language of schedules (docs/schedules.md).
struct TaskPhrase {
  std::string m_Words;               ///< empty when nothing is to come that the language can say
  std::vector<std::string> m_Notes;  ///< sentences on what the words do not tell
};

/// Says the task's document; `live` is what an agent knows of it. Moments are seconds since the
/// epoch, local time is that of the calendar.
TaskPhrase SayTask(const std::string& taskXml, const std::optional<LiveTask>& live,
                   const LocalCalendar& calendar, long now);

}  // namespace NoxAgent
