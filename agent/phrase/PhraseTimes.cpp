#include "agent/phrase/PhraseTimes.h"

#include "agent/phrase/PhraseUnits.h"
#include "agent/phrase/PhraseValues.h"

#include <algorithm>

namespace NoxAgent {

namespace {

// The nearest step on either side that a day is a multiple of.
std::string NearestDivisors(long interval) {
  const long unit = interval % HourSeconds == 0     ? HourSeconds
                    : interval % MinuteSeconds == 0 ? MinuteSeconds
                                                    : 1;
  long shorter = interval, longer = interval;
  while (shorter > 0 && DaySeconds % shorter != 0) {
    shorter -= unit;
  }
  while (DaySeconds % longer != 0) {
    longer += unit;
  }
  return "every " + LengthWords(shorter) + " or every " + LengthWords(longer);
}

void RequireDivisor(long interval) {
  if (interval > DaySeconds / 2) {
    throw PhraseError("every " + LengthWords(interval) +
                      " is more than half a day; say daily at, or every 2 days at");
  }
  if (DaySeconds % interval != 0) {
    throw PhraseError("a day is no multiple of " + LengthWords(interval) +
                      ", and each day begins anew; the nearest are " + NearestDivisors(interval) +
                      ", or say from when until when: every " + LengthWords(interval) +
                      " from 00:00 until 23:30");
  }
}

// How far the clocks are set on and back at most, in seconds.
struct LargestChange {
  long m_On = 0;
  long m_Back = 0;

  explicit LargestChange(const LocalCalendar& calendar) {
    const LocalCalendar::Change* change = calendar.ChangeAfter(0);
    for (; change != nullptr; change = calendar.ChangeAfter(change->m_Moment)) {
      m_On = std::max(m_On, change->m_After - change->m_Before);
      m_Back = std::max(m_Back, change->m_Before - change->m_After);
    }
  }
};

// Whether steps of real time meet the same times of day after each change of the clocks.
bool StepsSurviveChanges(long interval, const LocalCalendar& calendar) {
  const LocalCalendar::Change* change = calendar.ChangeAfter(0);
  for (; change != nullptr; change = calendar.ChangeAfter(change->m_Moment)) {
    if ((change->m_After - change->m_Before) % interval != 0) {
      return false;
    }
  }
  return true;
}

std::vector<PhraseTime> EveryClock(long interval) {
  std::vector<PhraseTime> times;
  for (long clock = 0; clock < DaySeconds; clock += interval) {
    times.push_back({clock, 0, 0});
  }
  return times;
}

// On the shortest day the first period ends with that day: where a period reaches beyond the next
// start, the scheduler loses what comes after it. So the day's end has a second one, which begins
// where the first one ends on the longest day. Periods are whole minutes.
std::vector<PhraseTime> AllDay(long interval, const LocalCalendar& calendar) {
  RequireDivisor(interval);
  const LargestChange change(calendar);
  if (!StepsSurviveChanges(interval, calendar)) {
    return EveryClock(interval);
  }
  PhraseTime first{0, interval, DaySeconds - change.m_On - interval};
  while (first.m_Duration % MinuteSeconds != 0) {
    first.m_Duration -= interval;
  }
  const long last = DaySeconds - interval;
  if (first.m_Duration == last) {
    return {first};
  }
  long duration = 0;
  while (duration % MinuteSeconds != 0 ||
         last - duration > first.m_Duration - change.m_Back + interval) {
    duration += interval;
  }
  return {first, {last - duration, duration == 0 ? 0 : interval, duration}};
}

void RequireMinutes(const PhraseRule& rule) {
  if (rule.m_Duration % MinuteSeconds != 0) {
    const long minutes = rule.m_Duration / MinuteSeconds;
    throw PhraseError("a repetition goes on for whole minutes, not for " +
                      LengthWords(rule.m_Duration) + "; the nearest are " +
                      (minutes == 0 ? "" : LengthWords(minutes * MinuteSeconds) + " and ") +
                      LengthWords((minutes + 1) * MinuteSeconds));
  }
  constexpr long LongestPeriod =
      28 * DaySeconds;  // no rule has starts that lie further apart for long
  if (rule.m_Interval != 0 && rule.m_Duration > LongestPeriod) {
    throw PhraseError("a repetition goes on for " + LengthWords(LongestPeriod) +
                      ", which are 28 days, at most");
  }
  if (rule.m_Interval > rule.m_Duration) {
    throw PhraseError("every " + LengthWords(rule.m_Interval) + " for " +
                      LengthWords(rule.m_Duration) + " does not repeat; say for " +
                      LengthWords(rule.m_Interval) + " at least");
  }
}

}  // namespace

std::vector<PhraseTime> TimesOf(const PhraseRule& rule, const LocalCalendar& calendar) {
  if (rule.m_IsAllDay) {
    return AllDay(rule.m_Interval, calendar);
  }
  RequireMinutes(rule);
  std::vector<PhraseTime> times;
  times.reserve(rule.m_Clocks.size());
  for (const long clock : rule.m_Clocks) {
    times.push_back({clock, rule.m_Interval, rule.m_Duration});
  }
  return times;
}

}  // namespace NoxAgent
