#include "agent/phrase/PhraseText.h"

#include "agent/phrase/PhraseLists.h"
#include "agent/phrase/PhraseValues.h"

namespace NoxAgent {

namespace {

using Days = PhraseRule::Days;

std::string InMonths(const PhraseRule& rule) {
  return rule.m_Months == PhraseRule::AllMonths ? "" : " in " + MonthListWords(rule.m_Months);
}

std::string DayWords(const PhraseRule& rule) {
  const std::string weekdays = WeekdayListWords(rule.m_Weekdays);
  const std::string count = std::to_string(rule.m_Count);
  switch (rule.m_Days) {
    case Days::EveryDays:
      return rule.m_Count == 1 ? "daily" + InMonths(rule) : "every " + count + " days";
    case Days::EveryWeeks:
      return rule.m_Count == 1 ? weekdays + InMonths(rule)
                               : "every " + count + " weeks on " + weekdays;
    case Days::MonthDays:
      return "monthly on " + MonthDayListWords(rule.m_MonthDays) + InMonths(rule);
    case Days::LastDay:
      return "monthly on last day" + InMonths(rule);
    case Days::MonthWeek:
      return "monthly on week " + std::to_string(rule.m_Week) + " " + weekdays + InMonths(rule);
    case Days::Ordinal:
      return "monthly on " + OrdinalWord(rule.m_Week) + " " + weekdays + InMonths(rule);
    default:
      return "";
  }
}

std::string MomentWords(long moment, const LocalCalendar& calendar) {
  return DateWords(calendar.DayOf(moment)) + " " + ClockWords(calendar.ClockAt(moment));
}

std::string RepetitionWords(const PhraseRule& rule) {
  if (rule.m_Duration == 0) {
    return "";
  }
  const std::string every = rule.m_Interval == 0 ? "" : " every " + LengthWords(rule.m_Interval);
  return every + " for " + LengthWords(rule.m_Duration) + (rule.m_Stops ? " then stop" : "");
}

std::string SpanWords(const PhraseRule& rule, const LocalCalendar& calendar) {
  std::string text;
  if (rule.m_From != NoTime) {
    const bool isMidnight = calendar.ClockAt(rule.m_From) == 0;
    text += " from " + (isMidnight ? DateWords(calendar.DayOf(rule.m_From))
                                   : MomentWords(rule.m_From, calendar));
  }
  if (rule.m_Until != NoTime) {
    const bool isLastSecond = calendar.ClockAt(rule.m_Until) == LocalCalendar::SecondsPerDay - 1;
    text += " until " + (isLastSecond ? DateWords(calendar.DayOf(rule.m_Until))
                                      : MomentWords(rule.m_Until, calendar));
  }
  return text;
}

// Repeated starts on plain days can be said shortly: "every 10 min from 08:00 until 18:00 on mon".
bool IsWindow(const PhraseRule& rule) {
  const bool isPlain = (rule.m_Days == Days::EveryDays || rule.m_Days == Days::EveryWeeks) &&
                       rule.m_Count == 1 && rule.m_Months == PhraseRule::AllMonths;
  return isPlain && !rule.m_IsAllDay && rule.m_Clocks.size() == 1 && rule.m_Interval != 0 &&
         !rule.m_Stops && rule.m_Clocks.front() + rule.m_Duration < LocalCalendar::SecondsPerDay;
}

std::string WindowWords(const PhraseRule& rule) {
  std::string text = "every " + LengthWords(rule.m_Interval);
  if (!rule.m_IsAllDay) {
    const long first = rule.m_Clocks.front();
    text += " from " + ClockWords(first) + " until " + ClockWords(first + rule.m_Duration);
  }
  return text + (rule.m_Days == Days::EveryWeeks ? " on " + WeekdayListWords(rule.m_Weekdays) : "");
}

std::string RuleText(const PhraseRule& rule, const LocalCalendar& calendar) {
  switch (rule.m_Days) {
    case Days::Now:
      return "now";
    case Days::Once:
      return "once " + MomentWords(rule.m_From, calendar) + RepetitionWords(rule);
    case Days::Cron:
      return "cron '" + rule.m_Cron + "'" + SpanWords(rule, calendar);
    default:
      return (rule.m_IsAllDay || IsWindow(rule)
                  ? WindowWords(rule)
                  : DayWords(rule) + " at " + ClockListWords(rule.m_Clocks) +
                        RepetitionWords(rule)) +
             SpanWords(rule, calendar);
  }
}

}  // namespace

std::string PhraseText(const Phrase& phrase, const LocalCalendar& calendar) {
  std::string text;
  for (const PhraseRule& rule : phrase) {
    text += (text.empty() ? "" : " and ") + RuleText(rule, calendar);
  }
  return text;
}

}  // namespace NoxAgent
