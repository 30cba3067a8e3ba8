#include "agent/handler/run/CpuBudget.h"

#include <algorithm>
#include <thread>
#include <utility>

using namespace std::chrono_literals;

namespace NoxHandler {

namespace {

// How much too late the end of the time may be noticed.
constexpr std::chrono::microseconds ShortestPause = 100ms;

}  // namespace

CpuBudget::CpuBudget(std::shared_ptr<const ControlGroup> group, std::chrono::seconds limit)
    : m_Group(std::move(group)), m_Limit(limit) {
  PutOffLook(m_Limit);
}

bool CpuBudget::IsSpent() {
  if (m_NextLook > Clock::now()) {
    return false;
  }
  const auto rest = m_Limit - m_Group->CpuTime();
  PutOffLook(rest);
  return rest <= 0us;
}

void CpuBudget::PutOffLook(std::chrono::microseconds rest) {
  const unsigned processors = std::max(1U, std::thread::hardware_concurrency());
  m_NextLook = Clock::now() + std::max(rest / processors, ShortestPause);
}

}  // namespace NoxHandler
