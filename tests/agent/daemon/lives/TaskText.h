// The task documents of the lives: what the scheduler is given, and what it has made of it.
#pragma once

#include <optional>
#include <string>

namespace NoxAgent {

/// When a task of a life runs, in seconds since the epoch: daily from its begin on, and again at an
/// interval for 22 hours after each start.
struct TaskPlan {
  static constexpr long Never = 0;

  int m_Number = 0;  ///< makes its document another one
  long m_Begin = 0;
  long m_Interval = 0;  ///< 0: once a day
  long m_End = Never;   ///< after which the scheduler deletes the task
  bool operator==(const TaskPlan&) const = default;

  bool HasEnded(long now) const { return m_End != Never && now > m_End; }
  /// The last start or repetition that is to run by now. REQUIRES: not before the begin.
  long LatestStart(long now) const;
  /// The first one after `now`.
  long NextStart(long now) const;
  std::string Describe() const;
};

/// What a task's file tells.
struct TaskFacts {
  static constexpr long NoRun = -1;

  int m_Document = 0;  ///< the number that it was made of
  bool m_IsEnabled = false;
  long m_LastRun = NoRun;  ///< its start
  std::string m_State;     ///< of that run; empty without one
};

/// The document of an enabled task. Each number gives another text, of several sectors or more,
/// which says the number from its beginning to its end.
std::string MakeTaskText(const TaskPlan& plan);

/// Nothing when the file is no such document as a whole.
std::optional<TaskFacts> ReadTaskText(const std::string& text);

}  // namespace NoxAgent
