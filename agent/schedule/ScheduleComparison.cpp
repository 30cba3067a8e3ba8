#include "agent/schedule/ScheduleComparison.h"

#include "agent/schedule/SchedulerRuns.h"
#include "agent/schedule/WordedRule.h"

#include <BaseSDK/ALong32.h>

#include <algorithm>
#include <utility>

namespace NoxAgent {

using Kind = ScheduleDifference::Kind;

namespace {

constexpr long DaysAhead = 2 * 366;
constexpr long Hour = 3600;
// Enough to see how a period ends; one with a step of a second has 86400 a day.
constexpr int MostRunsLookedAt = 300;

struct Start {
  long m_Day;
  long m_Moment;
  bool m_IsOfRule = true;
};

// Only these rules count otherwise than their words do.
bool CanDiffer(const TriggerRule& rule) {
  return (rule.m_Type == TriggerRule::Daily && rule.m_DaysInterval != 1) ||
         (rule.m_Type == TriggerRule::Weekly && rule.m_WeeksInterval != 1) ||
         rule.m_Type == TriggerRule::MonthlyByWeekday;
}

class Comparison {
 public:
  Comparison(const SchedulerTrigger& trigger, const LocalCalendar& calendar, long from)
      : m_Trigger(trigger),
        m_Calendar(calendar),
        m_Words(trigger.Rule(), trigger.BeginDay(), calendar) {
    m_From = std::max(from, trigger.Rule().m_Begin);
    m_Until = std::min(m_From, LocalCalendar::End() - DaysAhead * LocalCalendar::SecondsPerDay) +
              DaysAhead * LocalCalendar::SecondsPerDay;
  }

  std::vector<ScheduleDifference> Run() {
    FindStarts();
    for (std::size_t i = 0; i < m_Starts.size(); ++i) {
      const long before = i == 0 ? 0 : m_Starts[i].m_Moment - m_Starts[i - 1].m_Moment;
      const long after = i + 1 == m_Starts.size() ? 0 : NextMoment(i) - m_Starts[i].m_Moment;
      if (IsNew({before, after})) {
        CompareRunsFrom(i);
      }
    }
    return std::move(m_Found);
  }

 private:
  void Add(Kind kind, long day, long moment, long gap = 0) {
    const bool isKnown =
        std::any_of(m_Found.begin(), m_Found.end(),
                    [kind](const ScheduleDifference& each) { return each.m_Kind == kind; });
    if (!isKnown) {
      m_Found.push_back({kind, day, moment, gap});
    }
  }

  void FindStarts();
  void CompareStart(Start start, bool isWanted, bool isPlanned);
  long NextMoment(std::size_t start) const {
    return start + 1 < m_Starts.size() ? m_Starts[start + 1].m_Moment : SchedulerTrigger::Never;
  }
  bool IsNew(std::pair<long, long> gaps);
  void CompareRunsFrom(std::size_t start);
  void CompareRunsFrom(std::size_t start, long reading);
  void Miss(std::size_t start, long moment, bool isMadeUp);
  bool IsOrdinary(long start, long moment) const;

  const SchedulerTrigger& m_Trigger;
  const LocalCalendar& m_Calendar;
  const WordedRule m_Words;
  long m_From = 0;
  long m_Until = 0;
  std::vector<Start> m_Starts;
  std::vector<std::pair<long, long>> m_Gaps;
  std::vector<ScheduleDifference> m_Found;
};

void Comparison::FindStarts() {
  const TriggerRule& rule = m_Trigger.Rule();
  const long last = rule.m_End == NoTime ? m_Until : std::min(m_Until, rule.m_End);
  const long lastDay =
      rule.m_Type == TriggerRule::Once ? m_Trigger.BeginDay() : m_Calendar.DayOf(last);
  m_Starts.reserve(DaysAhead + 2);
  // A run, be it of the rule or not: that at the begin, or one before the search.
  m_Starts.push_back({m_Calendar.DayOf(m_From), m_From, false});
  for (long day = m_Calendar.DayOf(m_From); day <= lastDay; ++day) {
    const long start = m_Trigger.StartOn(day);
    const bool isWanted = CanDiffer(rule) ? m_Words.Selects(day) : start != NoTime;
    if (start == NoTime && !isWanted) {
      continue;
    }
    const long moment = start == NoTime ? m_Calendar.MomentOf(day, m_Trigger.Clock()) : start;
    if (moment >= m_From && moment <= last) {
      CompareStart({day, moment}, isWanted, start != NoTime);
    }
  }
}

void Comparison::CompareStart(Start start, bool isWanted, bool isPlanned) {
  const long shown = start.m_Moment + m_Calendar.OffsetAt(start.m_Moment);
  const bool isSkipped = shown != start.m_Day * LocalCalendar::SecondsPerDay + m_Trigger.Clock();
  if (isSkipped && !m_Calendar.HasDay(start.m_Day)) {
    return;
  }
  if (!isPlanned) {
    return Add(Kind::NoSuchStart, start.m_Day, start.m_Moment);
  }
  if (!isWanted) {
    Add(Kind::ForeignStart, start.m_Day, start.m_Moment);
  }
  if (isSkipped) {
    Add(Kind::SkippedTime, start.m_Day, start.m_Moment);
  }
  if (start.m_Moment == m_From) {
    m_Starts.clear();
  }
  m_Starts.push_back(start);
}

// What follows a start depends on how far the next one is, and the one before; where the clocks
// change between them, also on when they do.
bool Comparison::IsNew(std::pair<long, long> gaps) {
  constexpr long Day = LocalCalendar::SecondsPerDay;
  if (gaps.first % Day != 0 || gaps.second % Day != 0) {
    return true;
  }
  if (std::find(m_Gaps.begin(), m_Gaps.end(), gaps) != m_Gaps.end()) {
    return false;
  }
  m_Gaps.push_back(gaps);
  return true;
}

// What is lost depends on when the files are read: what comes late is found at once by a reading
// just after it, and what follows a start by one just after that.
void Comparison::CompareRunsFrom(std::size_t start) {
  const long moment = m_Starts[start].m_Moment;
  CompareRunsFrom(start, moment + 1);
  if (m_Trigger.Rule().Repeats()) {
    CompareRunsFrom(start, moment - 1);
  }
}

void Comparison::CompareRunsFrom(std::size_t start, long reading) {
  const TriggerRule& rule = m_Trigger.Rule();
  const long begin = m_Starts[start].m_Moment;
  const long next = NextMoment(start);
  const bool repeats = rule.Repeats() && m_Starts[start].m_IsOfRule;
  long end = BaseSDK::Add32(begin, repeats ? rule.m_DurationSeconds : 0);
  end = std::min(
      {end, next - 1, rule.m_End == NoTime ? SchedulerTrigger::Never : rule.m_End, m_Until});
  const long until = next == SchedulerTrigger::Never ? end : std::min(m_Until, next + Hour);

  SchedulerRuns runs(m_Calendar, {m_Trigger}, {begin, until, begin, reading});
  const auto wantedAfter = [&](long moment) {
    if (moment < end) {
      const long interval = rule.m_IntervalSeconds;
      const long repetition = BaseSDK::Add32(moment - (moment - begin) % interval, interval);
      return repetition <= end ? repetition : next;
    }
    return next;
  };
  long wanted = wantedAfter(begin);
  for (int count = 0; count < MostRunsLookedAt && wanted <= until; ++count) {
    const auto run = runs.Next();
    if (!run || run->m_First > wanted) {
      Miss(start, wanted, run.has_value());
    }
    if (!run || run->Has(next) || run->m_Last > next) {
      return;
    }
    wanted = wantedAfter(run->m_Last);
  }
}

void Comparison::Miss(std::size_t start, long moment, bool isMadeUp) {
  const Start& begun = m_Starts[start];
  const long day = m_Calendar.DayOf(moment);
  if (moment == NextMoment(start)) {
    // While a period goes on, its own repetitions come before the next start.
    const TriggerRule& rule = m_Trigger.Rule();
    const bool isNear = rule.Repeats() && moment - begun.m_Moment < rule.m_DurationSeconds + Hour;
    if (!isMadeUp && !isNear) {
      Add(Kind::PassedOver, m_Starts[start + 1].m_Day, moment);
    } else if (begun.m_IsOfRule && IsOrdinary(begun.m_Moment, moment)) {
      Add(Kind::LateStart, m_Starts[start + 1].m_Day, moment, moment - begun.m_Moment);
    }
  } else if (day != begun.m_Day && m_Trigger.StartOn(day) == NoTime) {
    Add(Kind::LostPastMidnight, begun.m_Day, moment);
  } else if (IsOrdinary(begun.m_Moment, moment)) {
    const bool hasBefore = start > 0 && m_Starts[start - 1].m_IsOfRule;
    const long before =
        hasBefore ? begun.m_Moment - m_Starts[start - 1].m_Moment : SchedulerTrigger::Never;
    Add(Kind::LostRepetition, begun.m_Day, moment,
        std::min(before, NextMoment(start) - begun.m_Moment));
  }
}

// A period that reaches to the next start only because a day is short costs an hour a year: what
// would mend that costs more.
bool Comparison::IsOrdinary(long start, long moment) const {
  return m_Calendar.OffsetAt(start - m_Trigger.Rule().m_DurationSeconds) ==
         m_Calendar.OffsetAt(moment);
}

}  // namespace

std::vector<ScheduleDifference> CompareSchedule(const SchedulerTrigger& trigger,
                                                const LocalCalendar& calendar, long from) {
  return Comparison(trigger, calendar, from).Run();
}

}  // namespace NoxAgent
