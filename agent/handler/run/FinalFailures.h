#pragma once

#include <BaseSDK/AString.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

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
  };

  /// How many are remembered; those that ended first are forgotten first.
  static constexpr std::size_t Most = 1000;
  static constexpr std::size_t MaxReason = 500;

  /// Reads the file. One that is not there is empty; lines that cannot be read are logged and left
  /// out.
  explicit FinalFailures(const BaseSDK::AString& directory);

  /// In place of an earlier one of the task.
  void Note(const BaseSDK::AString& taskId, Failure failure);
  /// The task has run since, or is gone.
  void Forget(const BaseSDK::AString& taskId);
  /// Writes what has changed since the last call; the file is the old one or the new one at every
  /// moment. That it cannot be written is logged; the next call tries again.
  void Save();

  const std::map<BaseSDK::AString, Failure>& All() const { return m_Failures; }

 private:
  void ReadLine(std::string_view line);
  std::string Encode() const;

  const BaseSDK::AString m_FileName;
  std::map<BaseSDK::AString, Failure> m_Failures;  ///< by task
  bool m_IsChanged = false;
};

}  // namespace NoxHandler
