#include "agent/document/ScheduleCheck.h"

#include <BaseSDK/ALong32.h>

#include <algorithm>
#include <array>

namespace NoxAgent {

using Kind = ScheduleDifference::Kind;

namespace {

constexpr long Day = LocalCalendar::SecondsPerDay;
constexpr long Minute = 60;
constexpr long Hour = 3600;
constexpr long Year = 366;
/// A run that comes later than this is late to the scheduler.
constexpr long PunctualSeconds = 59;

const ScheduleDifference* Find(const std::vector<ScheduleDifference>& found, Kind kind) {
  const auto place = std::find_if(found.begin(), found.end(),
                                  [kind](const auto& each) { return each.m_Kind == kind; });
  return place == found.end() ? nullptr : &*place;
}

std::string TwoDigits(long number) {
  return (number < 10 ? "0" : "") + std::to_string(number);
}

std::string ClockText(long seconds) {
  return TwoDigits(seconds / Hour) + ":" + TwoDigits(seconds / Minute % 60) + ":" +
         TwoDigits(seconds % Minute);
}

std::string Minutes(long seconds) {
  const long minutes = seconds / Minute;
  return std::to_string(minutes) + (minutes == 1 ? " minute" : " minutes");
}

}  // namespace

ScheduleCheck::ScheduleCheck(const TriggerFields& trigger, const LocalCalendar& calendar, long now,
                             ProblemList& problems)
    : m_Fields(trigger),
      m_Calendar(calendar),
      m_Now(now),
      m_Problems(problems),
      m_Trigger(RuleOf(trigger), calendar) {}

TextPlace ScheduleCheck::PlaceOr(const std::optional<SourceValue>& value) const {
  return value ? value->m_Place : m_Fields.m_Place;
}

// As a begin date is written.
std::string ScheduleCheck::WrittenStart(long moment) const {
  std::string text = LocalTime(moment);
  std::replace(text.begin(), text.end(), '-', '/');
  return text;
}

void ScheduleCheck::CheckFirstRun() {
  if (m_Fields.m_Begin < m_Now - PunctualSeconds) {
    m_Problems.Warn(PlaceOr(m_Fields.m_BeginText),
                    "BeginDate has passed, and the document tells of no run",
                    "a task that never ran runs once at once, late, whatever day it is",
                    "write a BeginDate to come" + LikeNextStart());
  } else if (m_Trigger.StartOn(m_Trigger.BeginDay()) == NoTime) {
    m_Problems.Warn(PlaceOr(m_Fields.m_BeginText), "BeginDate is on a day that the rule leaves out",
                    "a task that never ran runs once more on that day, at " +
                        LocalTime(m_Fields.m_Begin) + " or up to an hour later",
                    "write a BeginDate on a day of the rule" + LikeNextStart());
  }
}

std::string ScheduleCheck::LikeNextStart() const {
  const long from = std::max(m_Now, m_Fields.m_Begin);
  const long until = std::min(from, LocalCalendar::End() - 2 * Year * Day) + 2 * Year * Day;
  const long next = m_Trigger.StartAfter(from, until);
  return next == SchedulerTrigger::Never ? "" : ", like " + WrittenStart(next);
}

void ScheduleCheck::CheckRuns() {
  const Found found = CompareSchedule(m_Trigger, m_Calendar, m_Now);
  for (const ScheduleDifference& difference : found) {
    switch (difference.m_Kind) {
      case Kind::SkippedTime:
        TellSkippedTime(difference);
        break;
      case Kind::PassedOver:
        TellPassedOver(difference);
        break;
      case Kind::LostPastMidnight:
        TellLostPastMidnight(difference);
        break;
      default:
        break;
    }
  }
  TellPeriodMeetsStart(Find(found, Kind::LateStart), Find(found, Kind::LostRepetition));
  TellForeignDays(Find(found, Kind::NoSuchStart), Find(found, Kind::ForeignStart));
}

void ScheduleCheck::TellSkippedTime(const ScheduleDifference& difference) {
  const long day = difference.m_Day;
  const std::string wanted = LocalTime(m_Calendar.MomentOf(day, 12 * Hour)).substr(0, 10) + " " +
                             ClockText(m_Trigger.Clock());
  m_Problems.Warn(
      PlaceOr(m_Fields.m_BeginText),
      "some days do not have this time of day: there is no " + wanted + " in the local time zone",
      "a start on that day comes at " + LocalTime(difference.m_Moment),
      "choose a time of day that every day has");
}

void ScheduleCheck::TellPassedOver(const ScheduleDifference& difference) {
  const long length =
      m_Calendar.MomentOf(difference.m_Day + 1, 0) - m_Calendar.MomentOf(difference.m_Day, 0);
  m_Problems.Warn(PlaceOr(m_Fields.m_BeginText),
                  "the scheduler passes over the start of " + LocalTime(difference.m_Moment) +
                      ", for it goes from start to start in steps of 24 hours",
                  "there is no run on that day", "begin before " + ClockText(length));
}

void ScheduleCheck::TellLostPastMidnight(const ScheduleDifference& difference) {
  const long untilMidnight = Day - m_Trigger.Clock();
  m_Problems.Warn(
      PlaceOr(m_Fields.m_DurationText),
      "the Duration goes past midnight, into a day that the rule leaves out",
      "repetitions after midnight are lost, the first of them at " + LocalTime(difference.m_Moment),
      "write a Duration of at most " + Minutes(untilMidnight) +
          ", and a Trigger of its own for the next day");
}

void ScheduleCheck::TellPeriodMeetsStart(const ScheduleDifference* late,
                                         const ScheduleDifference* lost) {
  if (late == nullptr && lost == nullptr) {
    return;
  }
  std::string effect;
  if (late != nullptr) {
    effect = "starts may come up to an hour late, the first at " + LocalTime(late->m_Moment);
  }
  if (lost != nullptr) {
    effect += std::string(effect.empty() ? "" : ", and ") +
              "up to an hour of repetitions is lost after them, from " + LocalTime(lost->m_Moment) +
              " on";
  }
  m_Problems.Warn(PlaceOr(m_Fields.m_DurationText),
                  "the Duration reaches too near to the next start", effect,
                  MendOfDuration((late != nullptr ? late : lost)->m_Gap));
}

// The longest duration without this problem: it ends just before the next start when the scheduler
// finds that start by itself, as at midnight, and an hour before it otherwise.
std::string ScheduleCheck::MendOfDuration(long gap) const {
  TriggerRule rule = m_Trigger.Rule();
  const long step = rule.Repeats() ? rule.m_IntervalSeconds : Minute;
  for (const long longest : {gap - 1, gap - Hour}) {
    rule.m_DurationSeconds = longest / step * step / Minute * Minute;
    if (rule.m_DurationSeconds > 0 && IsBetter(rule)) {
      return "write a Duration of at most " + Minutes(rule.m_DurationSeconds);
    }
  }
  return "write a Duration that ends more than an hour before the next start";
}

bool ScheduleCheck::IsBetter(const TriggerRule& rule) const {
  const Found found = CompareSchedule(SchedulerTrigger(rule, m_Calendar), m_Calendar, m_Now);
  const Found before = CompareSchedule(m_Trigger, m_Calendar, m_Now);
  const auto isTold = [](const Found& list, std::initializer_list<Kind> kinds) {
    return std::any_of(kinds.begin(), kinds.end(),
                       [&list](Kind kind) { return Find(list, kind) != nullptr; });
  };
  const auto remains = [&](std::initializer_list<Kind> kinds) {
    return isTold(before, kinds) && isTold(found, kinds);
  };
  return !remains({Kind::LateStart, Kind::LostRepetition}) &&
         !remains({Kind::NoSuchStart, Kind::ForeignStart});
}

void ScheduleCheck::TellForeignDays(const ScheduleDifference* missing,
                                    const ScheduleDifference* foreign) {
  if (missing == nullptr && foreign == nullptr) {
    return;
  }
  if (m_Fields.m_Type == TriggerRule::MonthlyByWeekday) {
    return TellWeek(missing, foreign);
  }
  std::string effect = "when the clocks have been set forward, there is ";
  if (missing != nullptr) {
    effect += "no run at " + LocalTime(missing->m_Moment) + (foreign != nullptr ? ", but " : "");
  }
  if (foreign != nullptr) {
    effect += "one at " + LocalTime(foreign->m_Moment);
  }
  TellCount(effect);
}

void ScheduleCheck::TellCount(const std::string& effect) {
  const bool byDays = m_Fields.m_Type == TriggerRule::Daily;
  m_Problems.Warn(PlaceOr(byDays ? m_Fields.m_DaysIntervalText : m_Fields.m_WeeksIntervalText),
                  std::string(byDays ? "days" : "weeks") +
                      " are counted in spans of 24 hours from the BeginDate, not by the calendar",
                  effect, MendOfCount());
}

// While the clocks are set forward a day more has elapsed than at any other time of the year.
std::string ScheduleCheck::MendOfCount() const {
  const long rhythm = m_Fields.m_Type == TriggerRule::Daily
                          ? m_Fields.m_DaysInterval
                          : BaseSDK::Mul32(7, m_Fields.m_WeeksInterval);
  const long reference = std::max(m_Calendar.DayOf(m_Now), m_Trigger.BeginDay());
  for (long day = reference; day > reference - Year; --day) {
    if ((day - m_Trigger.BeginDay()) % rhythm != 0) {
      continue;
    }
    TriggerRule rule = m_Trigger.Rule();
    rule.m_Begin = m_Calendar.MomentOf(day, m_Trigger.Clock());
    if (IsBetter(rule)) {
      return "write a BeginDate at which the clocks are set forward, like " +
             WrittenStart(rule.m_Begin);
    }
  }
  return "let the task run more often, and the job see to the date";
}

void ScheduleCheck::TellWeek(const ScheduleDifference* missing, const ScheduleDifference* foreign) {
  static constexpr std::array<const char*, 5> Weeks = {"1st to the 6th", "7th to the 13th",
                                                       "14th to the 20th", "21st to the 27th",
                                                       "28th to the end"};
  const long week = m_Fields.m_Week;
  std::string effect;
  std::string mend;
  if (missing != nullptr) {
    effect = "there is no run on " + WeekdayInMonth(missing->m_Day);
    mend = "add a Trigger of Type 0 for each such day";
  }
  if (foreign != nullptr) {
    effect += std::string(effect.empty() ? "there is one on " : ", but one on ") +
              WeekdayInMonth(foreign->m_Day);
    mend += std::string(mend.empty() ? "" : ", and ") + "let the job see to the date";
  }
  m_Problems.Warn(PlaceOr(m_Fields.m_WeekText),
                  "Week " + std::to_string(week) + " is the " +
                      Weeks.at(static_cast<std::size_t>(week - 1)) + " of a month",
                  effect, mend);
}

// "2026-09-07, the first Monday of its month"
std::string ScheduleCheck::WeekdayInMonth(long day) const {
  static constexpr std::array<const char*, 7> Weekdays = {
      "Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
  static constexpr std::array<const char*, 5> Ordinals = {"first", "second", "third", "fourth",
                                                          "fifth"};
  const LocalCalendar::Date date = m_Calendar.DateOf(day);
  const bool isLast =
      m_Fields.m_Week == TriggerRule::LastWeek && date.m_Day + 7 > date.m_DaysInMonth;
  const auto ordinal = static_cast<std::size_t>((date.m_Day - 1) / 7);
  return LocalTime(m_Calendar.MomentOf(day, 12 * Hour)).substr(0, 10) + ", the " +
         (isLast ? "last" : Ordinals.at(ordinal)) + " " +
         Weekdays.at(static_cast<std::size_t>(date.m_Weekday)) + " of its month";
}

}  // namespace NoxAgent
