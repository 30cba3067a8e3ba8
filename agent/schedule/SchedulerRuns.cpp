#include "agent/schedule/SchedulerRuns.h"

#include <algorithm>
#include <utility>

namespace NoxAgent {

namespace {

constexpr long ReadingSeconds = 3600;

}  // namespace

SchedulerRuns::SchedulerRuns(const LocalCalendar& calendar, std::vector<SchedulerTrigger> triggers,
                             const Setting& setting)
    : m_Calendar(calendar),
      m_Triggers(std::move(triggers)),
      m_Setting(setting),
      m_Chances(m_Triggers.size(), setting.m_From),
      m_LastLook(setting.m_From),
      m_LastRun(setting.m_LastRun) {}

std::optional<RunSpan> SchedulerRuns::Next() {
  if (const auto repetitions = RegularRepetitions()) {
    return repetitions;
  }
  for (long chance = EarliestChance(); chance <= m_Setting.m_Until; chance = EarliestChance()) {
    const long look = FirstLookFrom(chance);
    if (look > m_Setting.m_Until) {
      break;
    }
    if (LookAt(look)) {
      return RunSpan{look, 0, look};
    }
  }
  return std::nullopt;
}

// What one trigger repeats while no other one has its say.
std::optional<RunSpan> SchedulerRuns::RegularRepetitions() {
  if (m_LastRun != m_LastLook || m_Calendar.IsShownAgain(m_LastRun)) {
    return std::nullopt;
  }
  const LocalCalendar::Change* const change = m_Calendar.ChangeAfter(m_LastRun);
  const long limit = change == nullptr ? m_Setting.m_Until + 1 : change->m_Moment;
  for (std::size_t i = 0; i < m_Triggers.size(); ++i) {
    auto span = m_Triggers[i].RegularRepetitionsAfter(m_LastRun);
    if (!span) {
      continue;
    }
    long end = std::min(limit, m_Setting.m_Until + 1);
    for (std::size_t j = 0; j < m_Chances.size(); ++j) {
      end = j == i ? end : std::min(end, m_Chances[j]);
    }
    if (span->m_First >= end) {
      continue;
    }
    span->m_Last = std::min(span->m_Last, end - 1 - (end - 1 - span->m_First) % span->m_Step);
    m_LastLook = m_LastRun = span->m_Last;
    m_Chances[i] = m_Triggers[i].ChanceAfter(m_LastLook, m_Setting.m_Until);
    return span;
  }
  return std::nullopt;
}

long SchedulerRuns::EarliestChance() const {
  long chance = SchedulerTrigger::Never;
  for (const long each : m_Chances) {
    chance = std::min(chance, each);
  }
  // A last run in an hour that is shown twice is read back as one of the first showing.
  if (m_LastRun != NoTime && m_Calendar.IsShownAgain(m_LastRun)) {
    chance = std::min(chance, LastReading(m_LastRun) + ReadingSeconds);
  }
  return chance;
}

// The looks follow from one another: each says when the next one is.
long SchedulerRuns::FirstLookFrom(long moment) const {
  long look = std::max(m_LastLook, LastCertainLook(moment));
  while (look < moment) {
    long next = std::min(NextMidnight(look), LastReading(look) + ReadingSeconds);
    for (const SchedulerTrigger& trigger : m_Triggers) {
      next = std::min(next, trigger.WakeAfter(look));
    }
    look = next;
  }
  return look;
}

long SchedulerRuns::LastCertainLook(long moment) const {
  const long reading = LastReading(moment);
  const long midnight = NextMidnight(reading);
  return midnight <= moment ? midnight : reading;
}

// Reckoned with the offset that is in force at the look: that is also right on the evening before a
// day that the zone leaves out.
long SchedulerRuns::NextMidnight(long look) const {
  return (m_Calendar.DayOf(look) + 1) * LocalCalendar::SecondsPerDay - m_Calendar.OffsetAt(look);
}

long SchedulerRuns::LastReading(long moment) const {
  const long since = (moment - m_Setting.m_Reading) % ReadingSeconds;
  return moment - since - (since < 0 ? ReadingSeconds : 0);
}

bool SchedulerRuns::LookAt(long moment) {
  ReadLastRunBack(moment);
  bool isDue = false;
  for (const SchedulerTrigger& trigger : m_Triggers) {
    isDue = isDue || trigger.IsDue(moment, m_LastRun);
  }
  m_LastLook = moment;
  m_LastRun = isDue ? moment : m_LastRun;
  FindChances(moment);
  return isDue;
}

void SchedulerRuns::FindChances(long now) {
  for (std::size_t i = 0; i < m_Triggers.size(); ++i) {
    if (m_Chances[i] <= now) {
      m_Chances[i] = m_Triggers[i].ChanceAfter(now, m_Setting.m_Until);
    }
  }
}

// The file holds the local time of the last run, which names the first showing of a repeated hour.
void SchedulerRuns::ReadLastRunBack(long now) {
  if (m_LastRun != NoTime && LastReading(now) > m_LastRun) {
    m_LastRun = m_Calendar.MomentOf(m_Calendar.DayOf(m_LastRun), m_Calendar.ClockAt(m_LastRun));
  }
}

}  // namespace NoxAgent
