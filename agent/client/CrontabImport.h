#pragma once

#include "agent/client/TaskWithJob.h"
#include "agent/crontab/CrontabFile.h"
#include "agent/schedule/LocalCalendar.h"
#include "agent/schedule/RunDifferences.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace NoxAgent {

/// What a crontab line is made into, with the proof that it runs when the line says.
struct ImportedTask {
  TaskWithJob m_Task;
  std::string m_Words;           ///< the schedule, as `create` reads it
  RunDifferences m_Differences;  ///< of the runs of two years from those that the line names
  bool m_IsThere = false;        ///< the agent has it already; it is not to be added
};

/// A line of a crontab, and what becomes of it.
struct ImportedLine {
  unsigned m_Line = 0;
  std::string m_Text;
  std::variant<CrontabComment, CrontabSetting, ImportedTask, CronRefusal> m_Content;
};

/// How a crontab is taken over.
struct ImportPlan {
  /// How many days with differences are told one by one of each task.
  static constexpr std::size_t MostDays = 6;
  static constexpr long ProofDays = 731;

  CrontabOrigin m_Origin;
  bool m_Enable = false;
  /// The IDs that the agent's tasks have.
  std::set<std::string> m_Taken;
  /// The text of a task's job; nothing when it has none or it may not be read.
  std::function<std::optional<std::string>(const std::string& id)> m_JobOf;
};

/// Makes tasks of a crontab's lines that begin at starts to come after `now`. All lines are
/// accounted for, in their order. Local time is that of the calendar.
std::vector<ImportedLine> ImportCrontab(const std::string& text, const ImportPlan& plan,
                                        const LocalCalendar& calendar, long now);

}  // namespace NoxAgent
