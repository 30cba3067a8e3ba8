#pragma once

#include <BaseSDK/AString.h>

#include <optional>
#include <string_view>

namespace NoxAgent {

/// Why the scheduler cannot make a task of a document, and where the reason stands in it.
struct Refusal {
  BaseSDK::AString m_Reason;
  unsigned m_Line = 1;  ///< both count from 1, the column in characters
  unsigned m_Column = 1;
};

/// Judges the bytes of a task file; nothing when the scheduler can make a task of them. It refuses
/// a text that is not UTF-8, is empty or is not well formed, one whose root is not Task, and one
/// without any Trigger: the scheduler would make a task without triggers of it, and delete the
/// file. Whatever else may be wrong is left to the scheduler. [any thread]
std::optional<Refusal> JudgeDocument(std::string_view bytes);

}  // namespace NoxAgent
