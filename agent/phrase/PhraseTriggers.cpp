#include "agent/phrase/PhraseTriggers.h"

#include "agent/crontab/CronRules.h"
#include "agent/crontab/HourCuts.h"
#include "agent/phrase/CronWords.h"
#include "agent/phrase/DayChoice.h"
#include "agent/phrase/DaySpans.h"
#include "agent/phrase/LostRuns.h"
#include "agent/phrase/PhraseTimes.h"
#include "agent/phrase/PhraseUnits.h"
#include "agent/phrase/PhraseValues.h"
#include "agent/schedule/RestOfPeriod.h"
#include "agent/schedule/SchedulerTrigger.h"
#include "agent/schedule/StartRule.h"
#include "agent/schedule/StartTriggers.h"

#include <algorithm>
#include <optional>

namespace NoxAgent {

namespace {

using Days = PhraseRule::Days;

// The triggers of one rule.
class TriggerMaker {
 public:
  TriggerMaker(const PhraseRule& rule, const LocalCalendar& calendar, long now)
      : m_Rule(rule),
        m_Calendar(calendar),
        m_Now(now),
        m_Earliest(std::max(now + 1, rule.m_From)) {}

  std::vector<TriggerRule> Make() {
    if (m_Rule.m_Days == Days::Now) {
      TriggerRule trigger;
      trigger.m_Type = TriggerRule::AsSoonAsPossible;
      return {trigger};
    }
    if (m_Rule.m_Days == Days::Cron) {
      AddCron();
      return m_Triggers;
    }
    for (const PhraseTime& time : TimesOf(m_Rule, m_Calendar)) {
      m_Time = time;
      if (m_Rule.m_Days == Days::Once) {
        AddOnce();
      } else {
        AddDays();
      }
    }
    return m_Triggers;
  }

 private:
  void AddOnce() {
    if (m_Rule.m_From <= m_Now) {
      throw PhraseError(DateWords(m_Calendar.DayOf(m_Rule.m_From)) + " " +
                        ClockWords(m_Calendar.ClockAt(m_Rule.m_From)) +
                        " has passed; say a later time, or now");
    }
    TriggerRule trigger;
    trigger.m_Begin = m_Rule.m_From;
    Add(WithTime(trigger));
  }

  void AddCron() {
    const CronExpression expression = ReadCron(m_Rule.m_Cron);
    auto made = MakeCronRules(expression, FindHourCuts(m_Calendar, m_Earliest));
    if (const auto* const refusal = std::get_if<CronRefusal>(&made)) {
      throw PhraseError(CronRefusalText(m_Rule.m_Cron, *refusal));
    }
    auto& rules = std::get<std::vector<StartRule>>(made);
    for (StartRule& rule : rules) {
      rule.m_Rule.m_End = m_Rule.m_Until;
    }
    Add(StartTriggers(rules, m_Calendar, m_Earliest));
  }

  void AddDays() {
    const DayChoice choice(m_Rule, FirstDay(), m_Calendar);
    AddRestUnderWay(choice);
    if (choice.IsCounted()) {
      return AddCounted(choice);
    }
    for (const DaySpan& span : DaySpans(m_Rule, m_Calendar, m_Earliest)) {
      AddFrom(span.m_Trigger, span.m_From, span.m_Until);
    }
  }

  // The day from which on counts go: that of the first start of all times of day.
  long FirstDay() const {
    if (m_Rule.m_From != NoTime) {
      return m_Calendar.DayOf(m_Rule.m_From);
    }
    PhraseRule uncounted = m_Rule;
    uncounted.m_Count = 1;
    const DayChoice choice(uncounted, 0, m_Calendar);
    long first = LocalCalendar::End();
    for (const PhraseTime& time : TimesOf(m_Rule, m_Calendar)) {
      for (long day = m_Calendar.DayOf(m_Earliest); day < m_Calendar.DayOf(first); ++day) {
        if (choice.Selects(day) && StartOn(day, time.m_Clock) >= m_Earliest) {
          first = m_Calendar.MomentOf(day, 0);
          break;
        }
      }
    }
    return m_Calendar.DayOf(first);
  }

  // NoTime where the clocks leave the time out: a begin there would move all other starts.
  long StartOn(long day, long clock) const {
    const long start = m_Calendar.MomentOf(day, clock);
    return m_Calendar.DayOf(start) == day && m_Calendar.ClockAt(start) == clock ? start : NoTime;
  }

  TriggerRule WithTime(TriggerRule trigger) const {
    trigger.m_IntervalSeconds = m_Time.m_Interval;
    trigger.m_DurationSeconds = m_Time.m_Duration;
    trigger.m_KillAtEnd = m_Rule.m_Stops;
    return trigger;
  }

  // A period that began before now goes on: what is left of it is a start of its own.
  void AddRestUnderWay(const DayChoice& choice) {
    if (m_Time.m_Interval == 0) {
      return;
    }
    TriggerRule period = WithTime({});
    period.m_End = m_Rule.m_Until;
    for (long day = m_Calendar.DayOf(m_Earliest - m_Time.m_Duration);
         day <= m_Calendar.DayOf(m_Earliest); ++day) {
      const long start = m_Calendar.MomentOf(day, m_Time.m_Clock);
      if (choice.Selects(day) && IsOfSpan(start) && start < m_Earliest) {
        Add(RestOfPeriod(period, start, m_Earliest));
      }
    }
  }

  // A span that begins at a time of day takes part of a period; one that begins with a day does not
  // reach back into the day before.
  bool IsOfSpan(long start) const {
    return m_Rule.m_From == NoTime || start >= m_Rule.m_From ||
           m_Calendar.DayOf(start) == m_Calendar.DayOf(m_Rule.m_From);
  }

  void AddFrom(const TriggerRule& days, long from, long until) {
    StartRule rule{WithTime(days), m_Time.m_Clock};
    rule.m_Rule.m_End = until;
    for (const long start : MovedStartsBeforeBegin(rule, m_Calendar, from)) {
      TriggerRule moved = WithTime({});
      moved.m_Begin = start;
      Add(moved);
    }
    if (const auto trigger = BeginAtFirstStart(rule, m_Calendar, from)) {
      Add(*trigger);
    }
  }

  // The start on a day that lacks the time of day comes at another one. The trigger cannot begin
  // there, so that start is one by itself.
  void AddMoved(long day, long from, long until) {
    const long moved = m_Calendar.MomentOf(day, m_Time.m_Clock);
    if (moved >= from && moved < until && StartOn(day, m_Time.m_Clock) == NoTime) {
      TriggerRule trigger = WithTime({});
      trigger.m_Begin = moved;
      Add(trigger);
    }
  }

  // The scheduler counts spans of 24 hours from the begin, so it is a day off in summer when it
  // began in winter. A trigger ends before the first such day, and another one begins there.
  void AddCounted(const DayChoice& choice) {
    long day = m_Calendar.DayOf(m_Earliest);
    const long lastDay =
        m_Calendar.DayOf(m_Rule.m_Until == NoTime ? LocalCalendar::End() : m_Rule.m_Until);
    for (; day <= lastDay; ++day) {
      if (!choice.Selects(day)) {
        continue;
      }
      AddMoved(day, m_Earliest, LocalCalendar::End());
      const long start = StartOn(day, m_Time.m_Clock);
      if (start < m_Earliest) {
        continue;
      }
      TriggerRule trigger = WithTime(choice.Trigger());
      trigger.m_Begin = start;
      trigger.m_End = m_Rule.m_Until;
      day = FirstOtherDay(trigger, choice, lastDay);
      if (day <= lastDay) {
        trigger.m_End = m_Calendar.MomentOf(day, 0) - 1;
        --day;
      }
      Add(trigger);
    }
  }

  // The first day that only one of trigger and words has; behind lastDay when there is none.
  long FirstOtherDay(const TriggerRule& rule, const DayChoice& choice, long lastDay) const {
    const SchedulerTrigger trigger(rule, m_Calendar);
    long day = trigger.BeginDay() + 1;
    while (day <= lastDay && (trigger.StartOn(day) != NoTime) == choice.Selects(day)) {
      ++day;
    }
    return day;
  }

  void Add(const std::vector<TriggerRule>& triggers) {
    for (const TriggerRule& trigger : triggers) {
      Add(trigger);
    }
  }

  void Add(const TriggerRule& trigger) {
    if (std::find(m_Triggers.begin(), m_Triggers.end(), trigger) != m_Triggers.end()) {
      return;  // two times of day may have the same rest
    }
    m_Triggers.push_back(trigger);
    if (m_Triggers.size() > MaxPhraseTriggers) {
      throw PhraseError("this takes more than " + std::to_string(MaxPhraseTriggers) +
                        " triggers; say it as several tasks");
    }
  }

  const PhraseRule& m_Rule;
  const LocalCalendar& m_Calendar;
  const long m_Now;
  const long m_Earliest;
  PhraseTime m_Time;
  std::vector<TriggerRule> m_Triggers;
};

}  // namespace

std::vector<TriggerRule> MakeTriggers(const Phrase& phrase, const LocalCalendar& calendar,
                                      long now) {
  std::vector<TriggerRule> all;
  for (const PhraseRule& rule : phrase) {
    const auto triggers = TriggerMaker(rule, calendar, now).Make();
    if (triggers.empty()) {
      throw PhraseError("there is no such start before the end of the schedule");
    }
    for (const TriggerRule& trigger : triggers) {
      RefuseLostRuns(trigger, calendar, now);
    }
    all.insert(all.end(), triggers.begin(), triggers.end());
  }
  if (all.size() > MaxPhraseTriggers) {
    throw PhraseError("this takes " + std::to_string(all.size()) + " triggers, more than " +
                      std::to_string(MaxPhraseTriggers) + "; say it as several tasks");
  }
  return all;
}

}  // namespace NoxAgent
