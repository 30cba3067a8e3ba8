#include "agent/client/ExitCode.h"

namespace NoxAgent {

std::string CommandError::Name() const {
  if (!m_Name.empty()) {
    return m_Name;
  }
  return m_Code == ExitCode::Usage         ? "usage"
         : m_Code == ExitCode::Unreachable ? "unreachable"
                                           : "failed";
}

}  // namespace NoxAgent
