#include "agent/client/ClockNotes.h"

#include "agent/phrase/PhraseValues.h"
#include "agent/phrase/TriggerRuns.h"
#include "agent/schedule/RunDifferences.h"
#include "agent/schedule/ScheduleComparison.h"
#include "agent/schedule/SchedulerRuns.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <optional>

namespace NoxAgent {

namespace {

constexpr long Day = LocalCalendar::SecondsPerDay;
constexpr long TwoYears = 731 * Day;
/// So long before a change and behind it its effects are looked for.
constexpr long Around = 2 * Day;

bool IsRegular(const TriggerRule& rule) {
  return rule.m_Type != TriggerRule::AsSoonAsPossible && rule.m_IntervalSeconds >= 0 &&
         rule.m_DurationSeconds >= 0;
}

std::vector<TriggerRule> RegularOnes(const std::vector<TriggerRule>& triggers) {
  std::vector<TriggerRule> regular;
  std::copy_if(triggers.begin(), triggers.end(), std::back_inserter(regular), IsRegular);
  return regular;
}

std::optional<std::string> MovedStartNote(const std::vector<TriggerRule>& triggers,
                                          const LocalCalendar& calendar, long now) {
  std::optional<ScheduleDifference> first;
  long clock = 0;
  for (const TriggerRule& rule : triggers) {
    if (!IsRegular(rule) || rule.m_Type == TriggerRule::Once) {
      continue;
    }
    const SchedulerTrigger trigger(rule, calendar);
    for (const ScheduleDifference& each : CompareSchedule(trigger, calendar, now)) {
      if (each.m_Kind == ScheduleDifference::Kind::SkippedTime &&
          (!first || each.m_Day < first->m_Day)) {
        first = each;
        clock = trigger.Clock();
      }
    }
  }
  if (!first) {
    return std::nullopt;
  }
  return "The clocks leave out " + ClockWords(clock) + " on " + DateWords(first->m_Day) +
         ": it starts at " + ClockWords(calendar.ClockAt(first->m_Moment)) + " then.";
}

// Every run that the triggers name after `from`, up to `until`, each once.
std::vector<long> NamedRuns(const std::vector<TriggerRule>& triggers, const LocalCalendar& calendar,
                            long from, long until) {
  std::vector<long> moments;
  for (const TriggerRule& rule : triggers) {
    for (const TriggerRun& run : TriggerRunsAfter(from, rule, calendar)) {
      for (long moment = run.m_First; moment <= std::min(run.m_Last, until);
           moment += std::max(run.m_Step, 1L)) {
        moments.push_back(moment);
      }
      if (run.m_First > until) {
        break;
      }
    }
  }
  std::sort(moments.begin(), moments.end());
  moments.erase(std::unique(moments.begin(), moments.end()), moments.end());
  return moments;
}

// How far the clocks are set on during the repetitions of the run, in seconds; less than 0 when
// they are set back.
long ClockChangeWithin(const TriggerRun& run, const LocalCalendar& calendar) {
  return calendar.OffsetAt(run.m_Last) - calendar.OffsetAt(run.m_First);
}

// Whether other triggers make up for it: they have the runs that come too late or not at all.
bool IsMadeUpFor(const TriggerRun& run, long change, const std::vector<TriggerRule>& others,
                 const LocalCalendar& calendar) {
  if (std::abs(change) < run.m_Step) {
    return false;  // all that comes behind the change does so at other times of day
  }
  const long shownEnd = run.m_Last - change;
  const long from = std::min(run.m_Last, shownEnd), until = std::max(run.m_Last, shownEnd);
  const std::vector<long> named = NamedRuns(others, calendar, from, until);
  long moment = run.m_Last + (change < 0 ? run.m_Step : 0);
  const long step = change < 0 ? run.m_Step : -run.m_Step;
  for (; moment > from && moment <= until; moment += step) {
    if (!std::binary_search(named.begin(), named.end(), moment)) {
      return false;
    }
  }
  return true;
}

// The first run of the trigger before `until` whose repetitions end at another time of day than
// they do otherwise.
std::optional<TriggerRun> MovedEnd(std::size_t trigger, const std::vector<TriggerRule>& triggers,
                                   const LocalCalendar& calendar, long now, long until) {
  const TriggerRule& rule = triggers[trigger];
  if (!rule.Repeats()) {
    return std::nullopt;
  }
  std::vector<TriggerRule> others = triggers;
  others.erase(others.begin() + static_cast<std::ptrdiff_t>(trigger));
  for (const TriggerRun& run : TriggerRunsAfter(now, rule, calendar)) {
    if (run.m_First >= until) {
      break;
    }
    const long change = ClockChangeWithin(run, calendar);
    const bool isCutOff = rule.m_End != NoTime && run.m_Last + run.m_Step > rule.m_End;
    if (change != 0 && !isCutOff && !IsMadeUpFor(run, change, others, calendar)) {
      return run;
    }
  }
  return std::nullopt;
}

std::optional<std::string> MovedEndNote(const std::vector<TriggerRule>& triggers,
                                        const LocalCalendar& calendar, long now) {
  const std::vector<TriggerRule> regular = RegularOnes(triggers);
  std::optional<TriggerRun> first;
  for (std::size_t i = 0; i < regular.size(); ++i) {
    const auto moved = MovedEnd(i, regular, calendar, now, first ? first->m_First : now + TwoYears);
    first = moved ? moved : first;
  }
  if (!first) {
    return std::nullopt;
  }
  const long change = ClockChangeWithin(*first, calendar);
  const long usualEnd = (calendar.ClockAt(first->m_Last) - change + Day) % Day;
  return "On " + DateWords(calendar.DayOf(first->m_Last)) + " the clocks are set " +
         (change > 0 ? "on" : "back") + " while it repeats from " +
         ClockWords(calendar.ClockAt(first->m_First)) + ": it " +
         (change > 0 ? "goes on until " : "ends at ") +
         ClockWords(calendar.ClockAt(first->m_Last)) + " then, not " + ClockWords(usualEnd) +
         ", as repetitions count real time.";
}

// The first runs around the change that are named and do not come.
std::optional<RunDifference> LostRuns(const std::vector<TriggerRule>& triggers,
                                      const LocalCalendar& calendar, long now, long change) {
  const long until = std::min(change + Around, LocalCalendar::End());
  const long from = std::max(now, change - Around);
  const std::vector<long> before =
      NamedRuns(triggers, calendar, std::max(now, from - Around), from);
  const std::vector<long> named = NamedRuns(triggers, calendar, from, until);
  std::vector<SchedulerTrigger> models;
  for (const TriggerRule& rule : triggers) {
    models.emplace_back(rule, calendar);
  }
  SchedulerRuns runs(calendar, models,
                     {from + 1, until, before.empty() ? from : before.back(), from});
  std::size_t next = 0;
  const RunDifferences found = FindRunDifferences(
      [&]() { return next < named.size() ? std::optional(named[next++]) : std::nullopt; }, runs,
      calendar, 4);
  for (const RunDifference& each : found.m_Days) {
    if (each.m_Kind == RunDifference::Kind::Missing) {
      return each;
    }
  }
  return std::nullopt;
}

std::optional<std::string> LostRunsNote(const std::vector<TriggerRule>& triggers,
                                        const LocalCalendar& calendar, long now) {
  const std::vector<TriggerRule> regular = RegularOnes(triggers);
  const LocalCalendar::Change* change = calendar.ChangeAfter(now);
  for (; change != nullptr && change->m_Moment < now + TwoYears;
       change = calendar.ChangeAfter(change->m_Moment)) {
    const bool isShortDay = change->m_After > change->m_Before;
    const auto lost = isShortDay && !regular.empty()
                          ? LostRuns(regular, calendar, now, change->m_Moment)
                          : std::nullopt;
    if (lost) {
      return "On " + DateWords(calendar.DayOf(lost->m_First)) +
             ", about a change of the clocks, the scheduler passes over " +
             ClockWords(calendar.ClockAt(lost->m_First)) +
             (lost->m_Count == 1 ? "" : " and " + std::to_string(lost->m_Count - 1) + " more") +
             ": it misses a short day behind a run of the last hour before; earlier times of day "
             "help.";
    }
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> ClockChangeNotes(const std::vector<TriggerRule>& triggers,
                                          const LocalCalendar& calendar, long now) {
  std::vector<std::string> notes;
  for (const auto& note :
       {MovedStartNote(triggers, calendar, now), MovedEndNote(triggers, calendar, now),
        LostRunsNote(triggers, calendar, now)}) {
    if (note) {
      notes.push_back(*note);
    }
  }
  return notes;
}

}  // namespace NoxAgent
