#include "agent/crontab/CronRules.h"

#include "agent/crontab/DayRuns.h"
#include "agent/schedule/LocalCalendar.h"

#include <array>
#include <string>

namespace NoxAgent {

namespace {

constexpr long AllDaysOfMonth = 0x7FFFFFFF;
constexpr long AllMonths = 0xFFF;
constexpr long AllDaysOfWeek = 0x7F;
constexpr int DaysOfAWeek = 7;
constexpr std::array<int, 12> LongestMonths = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

using DayRules = std::vector<TriggerRule>;

long DatesOfWeek(long week) {
  // Week 1 is the 1st to the 6th, week 2 begins with the 7th; the last one has what is left.
  const long first = week == 1 ? 1 : (week - 1) * 7;
  const long behind = week == TriggerRule::LastWeek ? 32 : week * 7;
  return ((1L << (behind - first)) - 1) << (first - 1);
}

bool HasAnyDate(long daysOfMonth, long months) {
  for (int month = 0; month < 12; ++month) {
    const long days = AllDaysOfMonth >> (31 - LongestMonths[static_cast<std::size_t>(month)]);
    if (HasBit(months, month) && (daysOfMonth & days) != 0) {
      return true;
    }
  }
  return false;
}

void AddDates(const CronExpression& expression, long daysOfMonth, DayRules& rules) {
  TriggerRule rule;
  rule.m_Type = TriggerRule::MonthlyByDate;
  rule.m_DaysOfMonth = daysOfMonth;
  rule.m_MonthsOfYear = expression.MonthsOfYear();
  if (daysOfMonth == AllDaysOfMonth && rule.m_MonthsOfYear == AllMonths) {
    rule = TriggerRule();
    rule.m_Type = TriggerRule::Daily;
  }
  if (HasAnyDate(daysOfMonth, expression.MonthsOfYear())) {
    rules.push_back(rule);
  }
}

// False when the dates are not those of whole weeks as a rule counts them.
bool AddWeekdays(const CronExpression& expression, long daysOfMonth, DayRules& rules) {
  TriggerRule rule;
  rule.m_DaysOfWeek = expression.DaysOfWeek();
  if (daysOfMonth == AllDaysOfMonth && expression.MonthsOfYear() == AllMonths) {
    rule.m_Type = TriggerRule::Weekly;
    rules.push_back(rule);
    return true;
  }
  rule.m_Type = TriggerRule::MonthlyByWeekday;
  rule.m_MonthsOfYear = expression.MonthsOfYear();
  for (rule.m_Week = 1; rule.m_Week <= TriggerRule::LastWeek; ++rule.m_Week) {
    const long days = DatesOfWeek(rule.m_Week);
    if ((daysOfMonth & days) == days) {
      rules.push_back(rule);
      daysOfMonth &= ~days;
    }
  }
  return daysOfMonth == 0;
}

CronRefusal RefusalOfBoth(const CronExpression& expression) {
  std::string weekdays;
  for (int weekday = 0; weekday < DaysOfAWeek; ++weekday) {
    if (HasBit(expression.DaysOfWeek(), weekday)) {
      weekdays += (weekdays.empty() ? "" : "|") + std::to_string(weekday);
    }
  }
  return {
      "the day of the month and the weekday must both match, for one of them begins with \"*\", "
      "and no rule of a task says that",
      "write * for the weekday, and have the command look for it: case $(date +\\%w) in " +
          weekdays + ") COMMAND;; esac"};
}

CronRefusal RefusalOfNoDay() {
  return {"it never runs: none of its months has such a day", {}};
}

std::variant<DayRules, CronRefusal> MakeDayRules(const CronExpression& expression) {
  const bool isAnyDate = expression.DaysOfMonth() == AllDaysOfMonth;
  const bool isAnyWeekday = expression.DaysOfWeek() == AllDaysOfWeek;
  DayRules rules;
  if (expression.EitherDaySuffices() && !isAnyDate && !isAnyWeekday) {
    AddDates(expression, expression.DaysOfMonth(), rules);
    (void)AddWeekdays(expression, AllDaysOfMonth, rules);
  } else if (expression.EitherDaySuffices()) {
    AddDates(expression, AllDaysOfMonth, rules);
  } else if (isAnyWeekday) {
    AddDates(expression, expression.DaysOfMonth(), rules);
  } else if (!AddWeekdays(expression, expression.DaysOfMonth(), rules)) {
    return RefusalOfBoth(expression);
  }
  if (rules.empty()) {
    return RefusalOfNoDay();
  }
  return rules;
}

}  // namespace

std::variant<std::vector<StartRule>, CronRefusal> MakeCronRules(const CronExpression& expression,
                                                                long cuts) {
  const auto days = MakeDayRules(expression);
  if (const auto* const refusal = std::get_if<CronRefusal>(&days)) {
    return *refusal;
  }
  const DayRules& dayRules = std::get<DayRules>(days);
  const auto runs = DivideDay(expression.Minutes(), expression.Hours(), cuts);
  if (const std::size_t count = runs.size() * dayRules.size(); count > MostCronRules) {
    return CronRefusal{"it takes " + std::to_string(count) + " rules, and a task may have " +
                           std::to_string(MostCronRules),
                       "name times at equal distances, or divide the line into several"};
  }
  std::vector<StartRule> rules;
  for (const DayRun& run : runs) {
    for (TriggerRule rule : dayRules) {
      rule.m_IntervalSeconds = run.m_Interval;
      rule.m_DurationSeconds = run.m_Duration;
      rules.push_back({rule, run.m_Clock});
    }
  }
  return rules;
}

}  // namespace NoxAgent
