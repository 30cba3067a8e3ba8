#include "agent/handler/run/FailureStreaks.h"

using BaseSDK::AString;

namespace NoxHandler {

void FailureStreaks::Streak::Write(std::ostream& out) const {
  out << m_Failures << ' ' << m_IsTold << ' ' << m_End;
}

bool FailureStreaks::Streak::Read(std::istream& in) {
  in >> m_Failures >> m_IsTold >> m_End;
  return !in.fail() && m_Failures >= 1;
}

FailureStreaks::FailureStreaks(const AString& directory)
    : m_Streaks(directory + "/streaks", "how many runs have failed in a row") {}

FailureStreaks::Streak FailureStreaks::Of(const AString& taskId) const {
  const auto found = m_Streaks.All().find(taskId);
  return found == m_Streaks.All().end() ? Streak() : found->second;
}

}  // namespace NoxHandler
