#pragma once

#include "tests/proof/PlainSchedule.h"

#include <random>
#include <string>

/// One moment at which one trigger is asked whether it is due.
struct Case {
  std::string zone;
  PlainSchedule::Rule rule;
  long lastRun = -1;
  long now = 0;
  long sleepSeconds = 0;

  /// The case and the answer wanted, as a line to paste into the table of FoundCasesTest.cpp.
  std::string AsRow(const PlainSchedule::Answer& wanted) const;
};

/// Draws cases that lie where schedules go wrong: around starts, their periods, changes of the
/// clock, ends of years and of the 32-bit range. The same seed and zone give the same cases.
class CaseMaker {
 public:
  CaseMaker(const std::string& zone, unsigned seed) : m_Zone(zone), m_Random(seed) {}
  PlainSchedule::Rule NextRule();
  /// A moment to ask the rule at, and a last run before it.
  Case NextCase(const PlainSchedule::Rule& rule, const PlainSchedule::Trigger& trigger);

 private:
  long Between(long low, long high);
  bool OneIn(long n) { return Between(1, n) == 1; }
  template <std::size_t N>
  long OneOf(const long (&values)[N]) {
    return values[static_cast<std::size_t>(Between(0, static_cast<long>(N) - 1))];
  }
  PlainSchedule::Civil NextCivil(int firstYear, int lastYear);
  void AddRepetition(PlainSchedule::Rule& rule);
  void AddDayRule(PlainSchedule::Rule& rule);
  long DayAfter(const PlainSchedule::Trigger& trigger);
  long MomentNear(const PlainSchedule::Trigger& trigger, long day);

  std::string m_Zone;
  std::mt19937 m_Random;
};
