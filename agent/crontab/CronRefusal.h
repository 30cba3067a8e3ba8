#pragma once

#include <string>

namespace NoxAgent {

/// Why something of a crontab is not taken over, and what to do instead. Both are sentences for
/// people, without a full stop at the end; the advice is empty when there is none to give.
struct CronRefusal {
  std::string m_Reason;
  std::string m_Advice;
};

}  // namespace NoxAgent
