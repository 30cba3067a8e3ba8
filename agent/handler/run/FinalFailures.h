#pragma once

#include "agent/handler/run/TaskNotes.h"

#include <BaseSDK/AString.h>

#include <cstddef>
#include <istream>
#include <map>
#include <ostream>

namespace NoxHandler {

/// The tasks whose last run failed and that are not tried again. The scheduler was told that all is
/// well, so that it lets go of them; what is true has to be remembered here, over restarts as well.
/// The file "failures" in the directory of the records holds them. [one thread at a time]
class FinalFailures {
 public:
  struct Failure {
    long m_Start = 0;  ///< both in seconds since the epoch
    long m_End = 0;
    BaseSDK::AString m_Reason;  ///< in words; cut to MaxReason characters

    bool operator==(const Failure&) const = default;
    void Write(std::ostream& out) const;
    bool Read(std::istream& in);
  };

  /// How many are remembered; those that ended first are forgotten first.
  static constexpr std::size_t Most = TaskNotes<Failure>::Most;
  static constexpr std::size_t MaxReason = 500;

  explicit FinalFailures(const BaseSDK::AString& directory);

  /// In place of an earlier one of the task.
  void Note(const BaseSDK::AString& taskId, Failure failure);
  /// The task has run since, or is gone.
  void Forget(const BaseSDK::AString& taskId) { m_Failures.Forget(taskId); }
  void Save() { m_Failures.Save(); }

  const std::map<BaseSDK::AString, Failure>& All() const { return m_Failures.All(); }

 private:
  TaskNotes<Failure> m_Failures;
};

}  // namespace NoxHandler
