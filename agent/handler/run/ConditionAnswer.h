#pragma once

#include "agent/handler/job/Job.h"
#include "agent/handler/run/Run.h"

#include <BaseSDK/AString.h>

namespace NoxHandler {

/// What a job's condition says: whether a run is to take place.
struct ConditionAnswer {
  enum class Kind { Yes, No, Unknown };

  Kind m_Kind;
  BaseSDK::AString m_Reason;  ///< in words, with the last line that was put out; empty for Yes

  /// What asks the job's condition. REQUIRES: it has one.
  static Job QuestionOf(const Job& job);
  /// What the question has come to. REQUIRES: question.IsOver().
  static ConditionAnswer Of(const Run& question);
};

}  // namespace NoxHandler
