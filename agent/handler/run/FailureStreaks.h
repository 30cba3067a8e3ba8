#pragma once

#include "agent/handler/run/TaskNotes.h"

#include <BaseSDK/AString.h>

#include <cstddef>
#include <istream>
#include <map>
#include <ostream>

namespace NoxHandler {

/// How many runs of a task have failed in a row, and whether its command for that was run. The file
/// "streaks" in the directory of the records holds them, so that they go on over a restart. [one
/// thread at a time]
class FailureStreaks {
 public:
  struct Streak {
    long m_Failures = 0;
    bool m_IsTold = false;  ///< on_failure was run
    long m_End = 0;         ///< of the last run, in seconds since the epoch

    bool operator==(const Streak&) const = default;
    void Write(std::ostream& out) const;
    bool Read(std::istream& in);
  };

  /// How many tasks are remembered; those whose last run ended first are forgotten first.
  static constexpr std::size_t Most = TaskNotes<Streak>::Most;

  explicit FailureStreaks(const BaseSDK::AString& directory);

  /// That of the task; one without failures when none is known.
  Streak Of(const BaseSDK::AString& taskId) const;
  /// In place of an earlier one of the task.
  void Note(const BaseSDK::AString& taskId, const Streak& streak) { m_Streaks.Set(taskId, streak); }
  /// The task's last run succeeded, or the task is gone.
  void Forget(const BaseSDK::AString& taskId) { m_Streaks.Forget(taskId); }
  void Save() { m_Streaks.Save(); }

  const std::map<BaseSDK::AString, Streak>& All() const { return m_Streaks.All(); }

 private:
  TaskNotes<Streak> m_Streaks;
};

}  // namespace NoxHandler
