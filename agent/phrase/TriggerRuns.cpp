#include "agent/phrase/TriggerRuns.h"

#include "agent/phrase/PhraseUnits.h"
#include "agent/schedule/SchedulerTrigger.h"

#include <algorithm>

namespace NoxAgent {

namespace {

TriggerRun RunOf(long start, const TriggerRule& rule) {
  const long end = start + rule.m_DurationSeconds;
  TriggerRun run{start, 0, start, rule.m_KillAtEnd ? end : NoTime};
  if (rule.Repeats()) {
    const long last = rule.m_End == NoTime ? end : std::min(end, rule.m_End);
    run.m_Last = last - (last - start) % rule.m_IntervalSeconds;
    run.m_Step = run.m_Last > start ? rule.m_IntervalSeconds : 0;
  }
  return run;
}

// What is left of the run after `now`, as documents can say it: a period is whole minutes, so some
// repetitions may stand by themselves.
void AddRest(TriggerRun run, long end, long now, std::vector<TriggerRun>& runs) {
  if (run.m_First <= now && run.m_Step == 0) {
    return;
  }
  const long begin = run.m_First;
  if (begin <= now) {
    run.m_First = now - (now - begin) % run.m_Step + run.m_Step;
  }
  for (; begin <= now && (end - run.m_First) % MinuteSeconds != 0; run.m_First += run.m_Step) {
    if (run.m_First > run.m_Last) {
      return;
    }
    const long minutes = (end - run.m_First) / MinuteSeconds * MinuteSeconds;
    runs.push_back(
        {run.m_First, 0, run.m_First, run.m_Stop == NoTime ? NoTime : run.m_First + minutes});
  }
  run.m_Step = run.m_First < run.m_Last ? run.m_Step : 0;
  if (run.m_First <= run.m_Last) {
    runs.push_back(run);
  }
}

}  // namespace

std::vector<TriggerRun> TriggerRunsAfter(long now, const TriggerRule& rule,
                                         const LocalCalendar& calendar) {
  const SchedulerTrigger trigger(rule, calendar);
  const long duration = trigger.Rule().m_DurationSeconds;
  const long end =
      rule.m_End == NoTime ? LocalCalendar::End() : std::max(trigger.Rule().m_End, rule.m_Begin);
  std::vector<TriggerRun> runs;
  const long first = std::max(trigger.BeginDay(), calendar.DayOf(now - duration));
  for (long day = first; day <= calendar.DayOf(end); ++day) {
    const long start = trigger.StartOn(day);
    if (start == NoTime || start > end) {
      continue;
    }
    AddRest(RunOf(start, trigger.Rule()), start + duration, now, runs);
  }
  std::sort(runs.begin(), runs.end());
  return runs;
}

}  // namespace NoxAgent
