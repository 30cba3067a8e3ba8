#include "tests/model/TriggerTable.h"

#include "tests/model/Moment.h"

#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <algorithm>

std::string AskedTrigger::AnswerAt(long now, bool firstEvent, bool secondEvent) {
  VirtualTime::VirtualClock::Instance().Start(now);
  bool late = false;
  bool expired = false;
  m_SleepSeconds = LongSleep;
  const bool due =
      m_Trigger.IsDue(firstEvent, secondEvent, m_SleepSeconds, late, expired, m_NextRunChanged);
  std::string answer = late ? "late" : due ? "due" : "";
  if (late && !due) {
    answer += " but not due";
  }
  if (expired) {
    answer += answer.empty() ? "expired" : " expired";
  }
  return answer.empty() ? "-" : answer;
}

void CheckDue(const DueRow& row) {
  SCOPED_TRACE(std::string(row.zone) + " " + row.trigger + " last run " + row.lastRun + " now " +
               row.now);
  const VirtualTime::Zone zone(row.zone);
  const long now = Moment::At(row.now);
  AskedTrigger asked(row.trigger, Moment::At(row.lastRun));
  EXPECT_EQ(Moment::Show(now), row.now) << "the row's own moment";
  EXPECT_EQ(asked.AnswerAt(now), row.answer);
  EXPECT_EQ(asked.m_SleepSeconds,
            row.sleepSeconds == 0 ? AskedTrigger::LongSleep : row.sleepSeconds);
  EXPECT_EQ(Moment::Show(asked.m_Trigger.m_NextRun), row.nextRun);
  EXPECT_EQ(asked.m_NextRunChanged, asked.m_Trigger.m_NextRun != -1);
}

void CheckStart(const StartRow& row) {
  SCOPED_TRACE(std::string(row.zone) + " " + row.trigger + " on the day of " + row.moment);
  const VirtualTime::Zone zone(row.zone);
  const AskedTrigger asked(row.trigger);
  EXPECT_FALSE(asked.m_Trigger.m_Disabled);
  const long start = asked.m_Trigger.GetTriggerStartTime(Moment::At(row.moment));
  EXPECT_EQ(Moment::Show(start), row.start);
}

std::vector<std::string> RunsBetween(const char* trigger, const char* from, const char* to) {
  constexpr long LongestSleep = 1800;
  AskedTrigger asked(trigger);
  std::vector<std::string> runs;
  for (long now = Moment::At(from); now < Moment::At(to);) {
    const std::string answer = asked.AnswerAt(now);
    if (answer == "due" || answer == "late") {
      runs.push_back(Moment::Show(now));
      asked.m_LastRun = now;
    }
    now += std::min(asked.m_SleepSeconds, LongestSleep - now % LongestSleep);
  }
  return runs;
}
