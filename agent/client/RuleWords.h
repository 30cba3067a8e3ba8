#pragma once

#include "agent/document/TriggerFields.h"

#include <string>
#include <vector>

namespace NoxAgent {

/// The rule of a trigger in words, and why a day is one of its days or not.
///
/// The sentences tell the schedule as the document has it. Only the scheduler says when a task
/// really runs; tests compare the two.
class RuleWords {
 public:
  explicit RuleWords(const TriggerFields& trigger);

  /// Whether the trigger can start a run at all: it is not disabled, of a known type, and has a
  /// readable begin date if it needs one.
  bool CanFire() const;
  /// Whether it starts at a time of day on the days that its rule selects.
  bool IsDated() const;

  /// "weekly, every 2nd week counted from the week of 2005-02-27, on Monday and Friday at 08:00,
  /// repeated every 30 minutes for 2 hours"
  std::string Rule() const;
  /// "It begins at 2005-03-01 08:00:00 +0100 and has no end."; empty unless dated.
  std::string Span() const;

  /// Why the local day of `moment` is not a day of the rule, one reason an entry; empty when it is
  /// one. REQUIRES: IsDated().
  std::vector<std::string> ReasonsAgainst(long moment) const;
  /// Why no start of its rule comes at or after the moment, so that it fires no more (or once, when
  /// the task never ran); empty when there may be one.
  std::string WhyNever(long moment) const;
  /// The start on the local day of `moment` if that is one of its days. REQUIRES: IsDated().
  long StartOnDayOf(long moment) const;

 private:
  struct Day;

  Day DayOf(long moment) const;
  bool LiesBeforeBegin(const Day& day) const;
  void AddCountReasons(const Day& day, std::vector<std::string>& reasons) const;
  void AddMaskReasons(const Day& day, std::vector<std::string>& reasons) const;
  std::string WhyNoDay() const;
  std::string DayWords() const;
  std::string RepetitionWords() const;

  const TriggerFields m_Trigger;
  long m_EveryDays = 1;
  long m_EveryWeeks = 1;
  long m_Week = 1;
};

/// The triggers of a task document, in its order.
std::vector<RuleWords> ReadTriggers(const std::string& taskXml);

/// Why none of the triggers has a start at or after the moment, "it has no trigger" or "trigger 1
/// names no weekday; trigger 2 ..."; empty when one may have.
std::string WhyNever(const std::vector<RuleWords>& triggers, long moment);

}  // namespace NoxAgent
