#pragma once

#include <BaseSDK/AString.h>

#include <optional>
#include <string_view>

namespace NoxAgent {

/// Why a document is none that the scheduler can make a task of, and where.
struct Refusal {
  BaseSDK::AString m_Reason;
  unsigned m_Line = 1;  ///< both count from 1, the column in characters
  unsigned m_Column = 1;
};

/// Judges the bytes of a task file. Refused is what is not UTF-8, empty or not well formed, what
/// has no Task as its root, and what has no Trigger at all: the scheduler would make a task without
/// triggers of it and delete that. Whatever else may be wrong is the task's own matter. [any
/// thread]
std::optional<Refusal> JudgeDocument(std::string_view bytes);

}  // namespace NoxAgent
