#include "agent/schedule/RunDifferences.h"

#include <algorithm>
#include <array>

namespace NoxAgent {

namespace {

// The runs one by one.
class RunMoments {
 public:
  explicit RunMoments(SchedulerRuns& runs) : m_Runs(runs) {}

  std::optional<long> Next() {
    if (m_Span && m_Span->m_Step != 0 && m_Span->m_Last - m_Span->m_First >= m_Span->m_Step) {
      m_Span->m_First += m_Span->m_Step;
    } else {
      m_Span = m_Runs.Next();
    }
    return m_Span ? std::optional(m_Span->m_First) : std::nullopt;
  }

 private:
  SchedulerRuns& m_Runs;
  std::optional<RunSpan> m_Span;
};

// Gathers the differences, which come in the order of time, by days.
class DifferenceDays {
 public:
  DifferenceDays(const LocalCalendar& calendar, std::size_t mostDays)
      : m_Calendar(calendar), m_MostDays(mostDays) {}

  void Add(RunDifference::Kind kind, long moment) {
    if (const long day = m_Calendar.DayOf(moment); day != m_Day) {
      EndDay();
      m_Day = day;
    }
    ++(kind == RunDifference::Kind::Missing ? m_Result.m_Missing : m_Result.m_Extra);
    RunDifference& difference = m_OfDay[static_cast<std::size_t>(kind)];
    difference.m_Kind = kind;
    difference.m_First = difference.m_Count == 0 ? moment : difference.m_First;
    difference.m_Last = moment;
    ++difference.m_Count;
  }

  RunDifferences Finish(std::size_t expected) {
    EndDay();
    m_Result.m_Expected = expected;
    return m_Result;
  }

 private:
  void EndDay() {
    std::sort(m_OfDay.begin(), m_OfDay.end(),
              [](const auto& one, const auto& other) { return one.m_First < other.m_First; });
    for (const RunDifference& difference : m_OfDay) {
      if (difference.m_Count != 0 && m_Result.m_Days.size() < m_MostDays) {
        m_Result.m_Days.push_back(difference);
      }
    }
    m_OfDay = {};
  }

  const LocalCalendar& m_Calendar;
  const std::size_t m_MostDays;
  RunDifferences m_Result;
  std::array<RunDifference, 2> m_OfDay;  ///< by kind
  long m_Day = 0;
};

}  // namespace

RunDifferences FindRunDifferences(const ExpectedMoments& expected, SchedulerRuns& runs,
                                  const LocalCalendar& calendar, std::size_t mostDays) {
  RunMoments moments(runs);
  DifferenceDays days(calendar, mostDays);
  std::size_t count = 0;
  std::optional<long> want = expected();
  std::optional<long> run = moments.Next();
  while (want || run) {
    const bool isWanted = want && (!run || *want <= *run);
    const bool isRun = run && (!want || *run <= *want);
    if (!isRun) {
      days.Add(RunDifference::Kind::Missing, *want);
    } else if (!isWanted) {
      days.Add(RunDifference::Kind::Extra, *run);
    }
    count += isWanted ? 1 : 0;
    want = isWanted ? expected() : want;
    run = isRun ? moments.Next() : run;
  }
  return days.Finish(count);
}

}  // namespace NoxAgent
