#pragma once

#include "model/TaskTrigger.h"
#include "tests/proof/Case.h"

#include <string>

/// Asks the trigger whether it is due at `now`; moves the virtual clock there.
PlainSchedule::Answer Ask(CTaskTrigger& trigger, long now, long sleepSeconds);

std::string Show(const PlainSchedule::Answer& answer);

/// One rule, read by model/ and by the plain rules. The zone must be set.
class Contestants {
 public:
  explicit Contestants(const PlainSchedule::Rule& rule);

  const PlainSchedule::Trigger& Plain() const { return m_Plain; }
  /// Asks both the same. Empty when they agree, else what differs and the row to paste.
  std::string Disagreement(const Case& asked);

 private:
  std::string DifferentReading() const;
  std::string DifferentStart(long moment) const;

  PlainSchedule::Trigger m_Plain;
  long m_LastRun = -1;
  CTaskTrigger m_Trigger;
};
