#include "agent/phrase/DaySpans.h"

#include "agent/phrase/DayChoice.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

namespace NoxAgent {

namespace {

using Days = PhraseRule::Days;

class SpanMaker {
 public:
  SpanMaker(const PhraseRule& rule, const LocalCalendar& calendar, long from)
      : m_Rule(rule), m_Calendar(calendar), m_From(from), m_Choice(rule, 0, calendar) {}

  std::vector<DaySpan> Make() {
    if (m_Rule.m_Days == Days::Ordinal) {
      for (int day = 0; day < 7; ++day) {
        if (HasBit(m_Rule.m_Weekdays, day)) {
          AddOrdinal(day);
        }
      }
    } else if (m_Rule.m_Days == Days::LastDay) {
      AddLastDays();
    } else if (m_Choice.IsOfEachWeek()) {
      TriggerRule trigger = m_Choice.Trigger();
      for (trigger.m_Week = 1; trigger.m_Week <= TriggerRule::LastWeek; ++trigger.m_Week) {
        Add(trigger);
      }
    } else {
      Add(m_Choice.Trigger());
    }
    return std::move(m_Spans);
  }

 private:
  // "The first Monday" may be one of two weeks of the scheduler's, which begin on the 7th, 14th,
  // 21st and 28th. So each year has a trigger for the months in which it is that of the later week.
  void AddOrdinal(int weekday) {
    using YearAndWeek = std::pair<long, long>;
    std::map<YearAndWeek, long> months;
    const long last = m_Calendar.DayOf(LocalCalendar::End());
    PhraseRule rule = m_Rule;
    rule.m_Weekdays = 1L << weekday;
    const DayChoice choice(rule, 0, m_Calendar);
    for (long day = m_Calendar.DayOf(m_From); day <= last; ++day) {
      const LocalCalendar::Date date = m_Calendar.DateOf(day);
      if (date.m_Weekday == weekday && choice.Selects(day)) {
        months[{date.m_Year, date.m_Day / 7 + 1}] |= 1L << date.m_Month;
      }
    }
    // In the first and in the last week there is no other such day.
    TriggerRule trigger = choice.Trigger();
    const bool isEveryYear = rule.m_Week == 1 || rule.m_Week == TriggerRule::LastWeek;
    if (isEveryYear) {
      Add(trigger);
    }
    for (const auto& [key, mask] : months) {
      trigger.m_Week = key.second;
      trigger.m_MonthsOfYear = mask;
      if (!isEveryYear || trigger.m_Week != rule.m_Week) {
        AddInYears(trigger, key.first, key.first);
      }
    }
  }

  // A trigger for the months of each length. The 28th of February is its last day in the three
  // years between two leap years, of which there is one every four years up to 2038.
  void AddLastDays() {
    constexpr long February = 1L << 1;
    constexpr std::pair<int, long> MonthsOfLength[] = {{31, 0xAD5}, {30, 0x528}, {29, February}};
    TriggerRule trigger = m_Choice.Trigger();
    for (const auto& [length, months] : MonthsOfLength) {
      AddLastDay(trigger, length, months);
    }
    if ((m_Rule.m_Months & February) == 0) {
      return;
    }
    trigger.m_DaysOfMonth = 1L << 27;
    trigger.m_MonthsOfYear = February;
    const long firstYear = m_Calendar.DateOf(m_Calendar.DayOf(m_From)).m_Year;
    const long lastYear = m_Calendar.DateOf(m_Calendar.DayOf(LocalCalendar::End())).m_Year;
    for (long leap = firstYear - firstYear % 4; leap < lastYear; leap += 4) {
      AddInYears(trigger, leap + 1, leap + 3);
    }
  }

  void AddLastDay(TriggerRule trigger, int length, long months) {
    trigger.m_DaysOfMonth = 1L << (length - 1);
    trigger.m_MonthsOfYear = m_Rule.m_Months & months;
    if (trigger.m_MonthsOfYear != 0) {
      Add(trigger);
    }
  }

  void AddInYears(const TriggerRule& trigger, long first, long last) {
    const long end = std::min(BeginOfYear(last + 1) - 1, LocalCalendar::End());
    m_Spans.push_back({trigger, std::max(m_From, BeginOfYear(first)),
                       m_Rule.m_Until == NoTime ? end : std::min(end, m_Rule.m_Until)});
  }

  long BeginOfYear(long year) const {
    const std::chrono::sys_days day =
        std::chrono::year(static_cast<int>(year)) / std::chrono::January / 1;
    const long number = static_cast<long>(day.time_since_epoch().count());
    const bool isHeld = number <= m_Calendar.DayOf(LocalCalendar::End());
    return isHeld ? m_Calendar.MomentOf(number, 0) : LocalCalendar::End();
  }

  void Add(const TriggerRule& trigger) { m_Spans.push_back({trigger, m_From, m_Rule.m_Until}); }

  const PhraseRule& m_Rule;
  const LocalCalendar& m_Calendar;
  const long m_From;
  const DayChoice m_Choice;
  std::vector<DaySpan> m_Spans;
};

}  // namespace

std::vector<DaySpan> DaySpans(const PhraseRule& rule, const LocalCalendar& calendar, long from) {
  return SpanMaker(rule, calendar, from).Make();
}

}  // namespace NoxAgent
