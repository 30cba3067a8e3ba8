#include "agent/handler/run/FinalFailures.h"

#include <BaseSDK/AUrl.h>

#include <string>

using BaseSDK::AString;
using BaseSDK::AUrl;

namespace NoxHandler {

void FinalFailures::Failure::Write(std::ostream& out) const {
  out << m_Start << ' ' << m_End << ' ' << AUrl::Encode(m_Reason).ToUtf8();
}

bool FinalFailures::Failure::Read(std::istream& in) {
  std::string reason;
  in >> m_Start >> m_End >> reason;
  m_Reason = AUrl::Decode(AString::FromUtf8(reason));
  return !in.fail();
}

FinalFailures::FinalFailures(const AString& directory)
    : m_Failures(directory + "/failures", "the failures of runs that are not tried again") {}

void FinalFailures::Note(const AString& taskId, Failure failure) {
  failure.m_Reason = failure.m_Reason.Left(MaxReason);
  m_Failures.Set(taskId, failure);
}

}  // namespace NoxHandler
