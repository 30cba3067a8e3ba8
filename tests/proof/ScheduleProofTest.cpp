// Two implementations of the schedule, asked the same questions over and over.
#include "model/Task.h"
#include "tests/proof/Comparison.h"
#include "tests/proof/OwnProcess.h"

#include <BaseSDK/ADateTime.h>
#include <VirtualTime/VirtualClock.h>
#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <memory>

namespace {

using BaseSDK::AString;

// Half-hour and quarter-hour shifts, midnight gaps, a skipped day, negative daylight saving, zones
// without any, both hemispheres, and rules that need no zone data.
const char* const zones[] = {"America/New_York",
                             "Europe/Berlin",
                             "Europe/Dublin",
                             "Australia/Lord_Howe",
                             "Pacific/Apia",
                             "America/Sao_Paulo",
                             "Asia/Beirut",
                             "Asia/Kathmandu",
                             "Africa/Casablanca",
                             "Africa/Cairo",
                             "America/Havana",
                             "America/St_Johns",
                             "Antarctica/Troll",
                             "Asia/Tehran",
                             "Pacific/Kwajalein",
                             "America/Caracas",
                             "Asia/Pyongyang",
                             "Europe/Lisbon",
                             "Asia/Amman",
                             "America/Asuncion",
                             "Pacific/Chatham",
                             "Australia/Sydney",
                             "UTC0",
                             "CET-1CEST,M3.5.0,M10.5.0/3",
                             "<-03>3<-02>,M10.3.0/0,M2.3.0/0"};

constexpr unsigned Seed = 20050301;

// Reading a rule costs more than asking it, so each is asked at several moments.
constexpr int MomentsPerRule = 8;

void CompareTriggers(const char* zoneName) {
  const VirtualTime::Zone zone(zoneName);
  CaseMaker maker(zoneName, Seed);
  int disagreements = 0;
  for (int i = 0; i < NOX_PROOF_CASES && disagreements < 5; i += MomentsPerRule) {
    const PlainSchedule::Rule rule = maker.NextRule();
    Contestants contestants(rule);
    for (int moment = 0; moment < MomentsPerRule; ++moment) {
      const std::string difference =
          contestants.Disagreement(maker.NextCase(rule, contestants.Plain()));
      if (difference.empty()) {
        continue;
      }
      ++disagreements;
      ADD_FAILURE() << difference;
    }
  }
}

std::string LastRunXml(long lastRun) {
  const AString text = BaseSDK::ADateTime(lastRun).ToString(L"%Y-%m-%d %H:%M:%S");
  return "<TaskHistory><RunTime>" + text.ToUtf8() + " Ok</RunTime></TaskHistory>";
}

// A task with up to three triggers, asked as a whole.
void CompareTasks(const char* zoneName) {
  const VirtualTime::Zone zone(zoneName);
  CaseMaker maker(zoneName, Seed + 1);
  for (int i = 0; i < NOX_PROOF_CASES / 10; ++i) {
    const PlainSchedule::Rule first = maker.NextRule();
    const Case asked = maker.NextCase(first, PlainSchedule::Trigger(first));
    std::vector<PlainSchedule::Trigger> plain;
    std::string schedule;
    for (int trigger = 0; trigger <= i % 3; ++trigger) {
      const PlainSchedule::Rule rule = trigger == 0 ? first : maker.NextRule();
      plain.emplace_back(rule);
      schedule += rule.ToXml();
    }
    VirtualTime::VirtualClock::Instance().Start(asked.now);
    CTask task(nullptr, L"T",
               AString::FromUtf8("<Task><HandlerCLSID>{1}</HandlerCLSID><Schedule>" + schedule +
                                 "</Schedule>" +
                                 (asked.lastRun > 0 ? LastRunXml(asked.lastRun) : "") + "</Task>"));
    long sleepSeconds = asked.sleepSeconds;
    PlainSchedule::TaskAnswer given;
    given.due = task.IsDue(false, false, sleepSeconds, given.late, given.neverRun, given.allExpired,
                           given.deleteTask, given.killAtEnd);
    given.sleepSeconds = sleepSeconds;
    const auto wanted =
        PlainSchedule::EvaluateTask(plain, task.m_LastRun, asked.now, asked.sleepSeconds);
    const auto show = [](const PlainSchedule::TaskAnswer& a) {
      return ::testing::PrintToString(std::vector<std::int64_t>{
          a.due, a.late, a.neverRun, a.allExpired, a.deleteTask, a.killAtEnd, a.sleepSeconds});
    };
    ASSERT_EQ(show(given), show(wanted))
        << "due late neverRun allExpired deleteTask killAtEnd sleep\n"
        << schedule << " last run " << task.m_LastRun << " now " << asked.now;
  }
}

class ScheduleProof : public ::testing::TestWithParam<const char*> {};

TEST_P(ScheduleProof, TriggersAgree) {
  InOwnProcess([] { CompareTriggers(GetParam()); });
}

TEST_P(ScheduleProof, TasksAgree) {
  InOwnProcess([] { CompareTasks(GetParam()); });
}

INSTANTIATE_TEST_SUITE_P(Zones, ScheduleProof, ::testing::ValuesIn(zones),
                         [](const auto& zone) { return std::to_string(zone.index); });

}  // namespace
