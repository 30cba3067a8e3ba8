#include "agent/phrase/PhraseProposals.h"

#include <algorithm>

namespace NoxAgent {

namespace {

using Days = PhraseRule::Days;
using RuleList = std::vector<PhraseRule>;

class Proposals {
 public:
  Proposals(const std::vector<TriggerRule>& triggers, const TriggerRun& next,
            const LocalCalendar& calendar)
      : m_Triggers(triggers), m_First(triggers.front()), m_Next(next), m_Calendar(calendar) {}

  RuleList All() const {
    if (m_First.m_Type == TriggerRule::Once) {
      return {Once()};
    }
    RuleList all;
    for (const PhraseRule& days : DaysProposals()) {
      for (const PhraseRule& times : TimesProposals(days)) {
        AddSpans(times, all);
      }
    }
    return all;
  }

 private:
  // What is left of it, if it is under way.
  PhraseRule Once() const {
    PhraseRule rule = Plain();
    rule.m_Days = Days::Once;
    rule.m_From = m_Next.m_First;
    rule.m_Until = NoTime;
    rule.m_Interval = m_Next.m_Step;
    rule.m_Duration =
        rule.m_Stops ? m_Next.m_Stop - m_Next.m_First : m_Next.m_Last - m_Next.m_First;
    rule.m_Clocks = {m_Calendar.ClockAt(m_Next.m_First)};
    return rule;
  }

  // The first trigger by itself.
  PhraseRule Plain() const {
    PhraseRule rule;
    rule.m_Clocks = {m_Calendar.ClockAt(m_First.m_Begin)};
    rule.m_Stops = m_First.m_KillAtEnd && m_First.m_DurationSeconds > 0;
    rule.m_Interval = m_First.Repeats() ? m_First.m_IntervalSeconds : 0;
    rule.m_Duration = m_First.Repeats() || rule.m_Stops ? m_First.m_DurationSeconds : 0;
    rule.m_Until = m_First.m_End;
    switch (m_First.m_Type) {
      case TriggerRule::Weekly:
        rule.m_Days = Days::EveryWeeks;
        rule.m_Count = m_First.m_WeeksInterval;
        rule.m_Weekdays = m_First.m_DaysOfWeek;
        break;
      case TriggerRule::MonthlyByDate:
        rule.m_Days = Days::MonthDays;
        rule.m_MonthDays = m_First.m_DaysOfMonth;
        rule.m_Months = m_First.m_MonthsOfYear;
        break;
      case TriggerRule::MonthlyByWeekday:
        rule.m_Days = Days::MonthWeek;
        rule.m_Weekdays = m_First.m_DaysOfWeek;
        rule.m_Months = m_First.m_MonthsOfYear;
        rule.m_Week = m_First.m_Week;
        break;
      default:
        rule.m_Days = Days::EveryDays;
        rule.m_Count = m_First.m_Type == TriggerRule::Daily ? m_First.m_DaysInterval : 1;
    }
    return rule;
  }

  RuleList DaysProposals() const {
    RuleList all;
    const PhraseRule plain = Plain();
    if (plain.m_Days == Days::MonthWeek) {
      AddOrdinals(plain, all);
      // Before an end that is near, "mon in aug" would else be the first, the second and so on.
      PhraseRule eachWeek = plain;
      eachWeek.m_Days = Days::EveryWeeks;
      eachWeek.m_Week = 1;
      all.insert(all.begin(), eachWeek);
    }
    if (plain.m_Days == Days::MonthDays && plain.m_MonthDays == PhraseRule::AllMonthDays) {
      PhraseRule daily = plain;
      daily.m_Days = Days::EveryDays;
      daily.m_MonthDays = 0;
      all.push_back(daily);
    }
    if (plain.m_Days == Days::MonthDays && IsLastDay(m_First)) {
      AddLastDay(plain, all);
    }
    all.push_back(plain);
    return all;
  }

  // One trigger for each length of a month, and several for February. One date alone is said as it
  // is.
  void AddLastDay(PhraseRule rule, RuleList& all) const {
    bool hasOtherDates = false;
    for (const TriggerRule& trigger : m_Triggers) {
      if (IsLastDay(trigger) && HasTimeOfFirst(trigger)) {
        hasOtherDates = hasOtherDates || trigger.m_DaysOfMonth != m_First.m_DaysOfMonth;
        rule.m_Months |= trigger.m_MonthsOfYear;
      }
    }
    if (hasOtherDates) {
      rule.m_Days = Days::LastDay;
      rule.m_MonthDays = 0;
      all.push_back(rule);
    }
  }

  // Whether its dates are such as end months.
  static bool IsLastDay(const TriggerRule& trigger) {
    constexpr long From28To31 = 0xFL << 27;
    return trigger.m_Type == TriggerRule::MonthlyByDate &&
           (trigger.m_DaysOfMonth & ~From28To31) == 0;
  }

  bool HasTimeOfFirst(const TriggerRule& trigger) const {
    return trigger.m_IntervalSeconds == m_First.m_IntervalSeconds &&
           trigger.m_DurationSeconds == m_First.m_DurationSeconds &&
           m_Calendar.ClockAt(trigger.m_Begin) == m_Calendar.ClockAt(m_First.m_Begin);
  }

  // One trigger for each of several weeks and years: the first Monday is in week 1 or 2.
  void AddOrdinals(PhraseRule rule, RuleList& all) const {
    rule.m_Days = Days::Ordinal;
    for (const long week : {m_First.m_Week, m_First.m_Week - 1, TriggerRule::LastWeek}) {
      if (week >= 1 && (all.empty() || all.back().m_Week != week)) {
        rule.m_Week = week;
        rule.m_Months = MonthsOfOrdinal(week);
        all.push_back(rule);
      }
    }
  }

  // Those of all triggers that such a rule may have.
  long MonthsOfOrdinal(long week) const {
    const long clock = m_Calendar.ClockAt(m_First.m_Begin);
    const long other = week == TriggerRule::LastWeek ? week - 1 : week + 1;
    long months = 0;
    for (const TriggerRule& trigger : m_Triggers) {
      if (IsLikeFirst(trigger) && m_Calendar.ClockAt(trigger.m_Begin) == clock &&
          (trigger.m_Week == week || trigger.m_Week == other)) {
        months |= trigger.m_MonthsOfYear;
      }
    }
    return months;
  }

  // Whether it differs in no more than week, months, time of day, begin and end.
  bool IsLikeFirst(const TriggerRule& trigger) const {
    return trigger.m_Type == m_First.m_Type && trigger.m_DaysOfWeek == m_First.m_DaysOfWeek &&
           trigger.m_DaysOfMonth == m_First.m_DaysOfMonth &&
           trigger.m_IntervalSeconds == m_First.m_IntervalSeconds &&
           trigger.m_DurationSeconds == m_First.m_DurationSeconds;
  }

  RuleList TimesProposals(const PhraseRule& days) const {
    RuleList all;
    const std::vector<long> clocks = ClocksOfLike();
    PhraseRule rule = days;
    const bool isPlain = (days.m_Days == Days::EveryDays || days.m_Days == Days::EveryWeeks) &&
                         days.m_Count == 1 && days.m_Months == PhraseRule::AllMonths &&
                         !days.m_Stops;
    const long step = days.m_Interval != 0 ? days.m_Interval
                      : clocks.size() > 1  ? clocks[1] - clocks[0]
                                           : 0;
    if (isPlain && step != 0) {
      rule.m_IsAllDay = true;
      rule.m_Interval = step;
      rule.m_Duration = 0;
      rule.m_Clocks.clear();
      all.push_back(rule);
      rule = days;
    }
    if (clocks.size() > 1) {
      rule.m_Clocks = clocks;
      all.push_back(rule);
    }
    all.push_back(days);
    return all;
  }

  // The times of day of all triggers that are like the first otherwise.
  std::vector<long> ClocksOfLike() const {
    std::vector<long> clocks;
    for (const TriggerRule& trigger : m_Triggers) {
      if (IsLikeFirst(trigger)) {
        clocks.push_back(m_Calendar.ClockAt(trigger.m_Begin));
      }
    }
    std::sort(clocks.begin(), clocks.end());
    clocks.erase(std::unique(clocks.begin(), clocks.end()), clocks.end());
    return clocks;
  }

  // Without a begin and an end first, and without an end where the first trigger has one: another
  // trigger may go on behind it.
  void AddSpans(PhraseRule rule, RuleList& all) const {
    const long until = rule.m_Until;
    for (const long end : {NoTime, until}) {
      for (const long begin :
           {NoTime, DayBegin(EarliestBegin()), DayBegin(m_First.m_Begin), m_First.m_Begin}) {
        rule.m_Until = end;
        rule.m_From = begin;
        all.push_back(rule);
      }
      if (until == NoTime) {
        break;
      }
    }
  }

  long DayBegin(long moment) const { return m_Calendar.MomentOf(m_Calendar.DayOf(moment), 0); }

  // Of the triggers of its type: one rule with several times of day begins with the first of them.
  long EarliestBegin() const {
    long begin = m_First.m_Begin;
    for (const TriggerRule& trigger : m_Triggers) {
      begin = trigger.m_Type == m_First.m_Type ? std::min(begin, trigger.m_Begin) : begin;
    }
    return begin;
  }

  const std::vector<TriggerRule>& m_Triggers;
  const TriggerRule& m_First;
  const TriggerRun& m_Next;
  const LocalCalendar& m_Calendar;
};

}  // namespace

std::vector<PhraseRule> ProposePhrases(const std::vector<TriggerRule>& triggers,
                                       const TriggerRun& next, const LocalCalendar& calendar) {
  return Proposals(triggers, next, calendar).All();
}

}  // namespace NoxAgent
