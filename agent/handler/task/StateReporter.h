#pragma once

#include <BaseSDK/AString.h>

#include <chrono>
#include <map>
#include <optional>

namespace NoxHandler {

/// Reports to the scheduler how runs went. The scheduler knows a task only while it has the task in
/// memory: at the end of its hourly cycle there is a moment in which it has none, and while
/// plug-ins are replaced it may be away. A report that it does not take is kept and tried again,
/// unless the task is gone for good. [supervisor thread]
class StateReporter {
 public:
  using Clock = std::chrono::steady_clock;

  /// How long a report that is not taken is tried again, and at which intervals.
  static constexpr std::chrono::seconds KeepFor{60};
  static constexpr std::chrono::milliseconds TryEvery{100};

  explicit StateReporter(const BaseSDK::AString& schedulerClassId)
      : m_SchedulerClassId(schedulerClassId) {}

  /// Reports the state now, and again later if it is not taken. Replaces a kept report of the task.
  void Report(const BaseSDK::AString& taskId, const BaseSDK::AString& state);
  /// Drops the kept report of the task, because a new run has begun.
  void Cancel(const BaseSDK::AString& taskId) { m_Kept.erase(taskId); }
  bool HasKept(const BaseSDK::AString& taskId) const { return m_Kept.contains(taskId); }
  /// Tries the kept reports whose time has come.
  void Retry();
  /// When Retry is due; nothing when no report is kept.
  std::optional<Clock::time_point> NextTry() const;

  /// The task's document, asked of the scheduler; empty when it has none or cannot be asked.
  BaseSDK::AString TaskXml(const BaseSDK::AString& taskId) const;

 private:
  enum class Answer { Taken, TaskGone, NotNow };
  struct StateReport {
    BaseSDK::AString m_State;
    Clock::time_point m_GiveUp;
    Clock::time_point m_NextTry;
  };

  Answer Tell(const BaseSDK::AString& taskId, const BaseSDK::AString& state) const;

  const BaseSDK::AString m_SchedulerClassId;
  std::map<BaseSDK::AString, StateReport> m_Kept;
};

}  // namespace NoxHandler
