#pragma once

#include <BaseSDK/AString.h>

#include <chrono>
#include <map>
#include <optional>

namespace NoxHandler {

/// Tells the scheduler how runs went. The scheduler knows a task only while it has it in memory: at
/// the end of its hourly cycle there is a moment in which it has none, and while plug-ins are
/// replaced it may be away. A report that it does not take is kept and tried again, unless the task
/// is gone for good. [supervisor thread]
class StateReporter {
 public:
  using Clock = std::chrono::steady_clock;

  /// How long a report is tried, and how often.
  static constexpr std::chrono::seconds KeepFor{60};
  static constexpr std::chrono::milliseconds TryEvery{100};

  explicit StateReporter(const BaseSDK::AString& schedulerClassId)
      : m_SchedulerClassId(schedulerClassId) {}

  /// Replaces an earlier report of the task that was not taken.
  void Report(const BaseSDK::AString& taskId, const BaseSDK::AString& state);
  /// Drops the task's report: a new run has begun.
  void Cancel(const BaseSDK::AString& taskId) { m_Kept.erase(taskId); }
  bool HasKept(const BaseSDK::AString& taskId) const { return m_Kept.contains(taskId); }
  /// Tries again what is due for it.
  void Retry();
  std::optional<Clock::time_point> NextTry() const;

  /// The task's document; empty when the scheduler has none.
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
