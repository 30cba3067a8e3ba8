#include "agent/document/ProblemList.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace NoxAgent {

using BaseSDK::AString;

void ProblemList::Add(TaskDocumentSeverity severity, TextPlace place, const std::string& message,
                      const std::string& effect, const std::string& mend) {
  m_Problems.push_back({severity, place.m_Line, place.m_Column, AString::FromUtf8(message),
                        AString::FromUtf8(effect), AString::FromUtf8(mend)});
}

void ProblemList::Warn(TextPlace place, const std::string& message, const std::string& effect,
                       const std::string& mend) {
  Add(TaskDocumentSeverity::Warning, place, message, effect, mend);
}

std::vector<TaskDocumentProblem> ProblemList::Take() {
  std::stable_sort(m_Problems.begin(), m_Problems.end(), [](const auto& left, const auto& right) {
    return std::tie(left.m_Line, left.m_Column) < std::tie(right.m_Line, right.m_Column);
  });
  return std::exchange(m_Problems, {});
}

}  // namespace NoxAgent
