#pragma once

#include "agent/handler/process/ControlGroup.h"

#include <chrono>
#include <memory>

namespace NoxHandler {

/// The processor time that a run may take with all its processes together. The kernel counts it and
/// tells nobody when it is over, so somebody has to look: next at the moment before which all
/// processors together cannot have taken the rest.
class CpuBudget {
 public:
  using Clock = std::chrono::steady_clock;

  CpuBudget(std::shared_ptr<const ControlGroup> group, std::chrono::seconds limit);

  /// When the next look is due.
  Clock::time_point NextLook() const { return m_NextLook; }
  /// Whether the time is over. Looks if that is due.
  bool IsSpent();

 private:
  void PutOffLook(std::chrono::microseconds rest);

  const std::shared_ptr<const ControlGroup> m_Group;
  const std::chrono::microseconds m_Limit;
  Clock::time_point m_NextLook;
};

}  // namespace NoxHandler
