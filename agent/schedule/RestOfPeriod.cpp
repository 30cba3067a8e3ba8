#include "agent/schedule/RestOfPeriod.h"

namespace NoxAgent {

std::vector<TriggerRule> RestOfPeriod(const TriggerRule& rule, long start, long from) {
  constexpr long MinuteSeconds = 60;
  const long interval = rule.m_IntervalSeconds;
  const long end = start + rule.m_DurationSeconds;
  const long steps = (from - start + interval - 1) / interval;
  std::vector<TriggerRule> triggers;
  for (long next = start + steps * interval;
       next <= end && (rule.m_End == NoTime || next <= rule.m_End); next += interval) {
    TriggerRule rest;
    rest.m_Begin = next;
    rest.m_End = rule.m_End;
    rest.m_KillAtEnd = rule.m_KillAtEnd;
    const bool isRest = (end - next) % MinuteSeconds == 0;
    if (isRest && end - next >= interval) {
      rest.m_IntervalSeconds = interval;
    }
    if (rest.m_IntervalSeconds != 0 || rule.m_KillAtEnd) {
      rest.m_DurationSeconds = (end - next) / MinuteSeconds * MinuteSeconds;
    }
    triggers.push_back(rest);
    if (isRest) {
      break;
    }
  }
  return triggers;
}

}  // namespace NoxAgent
