#include "agent/schedule/RunDifferences.h"

#include "tests/agent/simulation/TaskText.h"
#include "tests/support/LocalTimes.h"

#include <VirtualTime/Zone.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace NoxAgentTest {

using namespace NoxAgent;
using ::testing::ElementsAre;
using TestSupport::Day;
using TestSupport::Hour;

namespace {

// "missing 2 from 2026-03-02 08:00:00 +0000"
std::vector<std::string> Written(const RunDifferences& differences) {
  std::vector<std::string> texts;
  for (const RunDifference& each : differences.m_Days) {
    texts.push_back((each.m_Kind == RunDifference::Kind::Missing ? "missing " : "extra ") +
                    std::to_string(each.m_Count) + " from " + Show(each.m_First) + " to " +
                    Show(each.m_Last));
  }
  return texts;
}

// A task that runs daily at 08:00 and every hour until 10:00, in March 2026 and in UTC.
class RunDifferencesOfATask : public testing::Test {
 protected:
  RunDifferencesOfATask() : m_Zone(TestSupport::Utc), m_Calendar(Local("2026-03-01 00:00:00")) {
    m_Rule.m_Type = TriggerRule::Daily;
    m_Rule.m_IntervalSeconds = Hour;
    m_Rule.m_DurationSeconds = 2 * Hour;
    m_Rule.m_Begin = Local("2026-03-02 08:00:00");
    m_Setting.m_From = m_Setting.m_Reading = Local("2026-03-02 00:00:00");
    m_Setting.m_Until = Local("2026-03-05 00:00:00") - 1;
  }

  RunDifferences Compare(const std::vector<std::string>& expected, std::size_t mostDays = 100) {
    std::vector<long> moments;
    for (const std::string& time : expected) {
      moments.push_back(Local("2026-03-" + time + ":00"));
    }
    SchedulerRuns runs(m_Calendar, {SchedulerTrigger(m_Rule, m_Calendar)}, m_Setting);
    auto next = moments.begin();
    return FindRunDifferences(
        [&] { return next == moments.end() ? std::nullopt : std::optional(*next++); }, runs,
        m_Calendar, mostDays);
  }

  const VirtualTime::Zone m_Zone;
  const LocalCalendar m_Calendar;
  TriggerRule m_Rule;
  SchedulerRuns::Setting m_Setting;
};

}  // namespace

TEST_F(RunDifferencesOfATask, AreNoneWhenAllComesAsExpected) {
  const RunDifferences differences =
      Compare({"02 08:00", "02 09:00", "02 10:00", "03 08:00", "03 09:00", "03 10:00", "04 08:00",
               "04 09:00", "04 10:00"});
  EXPECT_TRUE(differences.IsNone());
  EXPECT_TRUE(differences.m_Days.empty());
  EXPECT_EQ(9U, differences.m_Expected);
}

TEST_F(RunDifferencesOfATask, AreGatheredByDayAndKind) {
  const RunDifferences differences =
      Compare({"02 07:00", "02 08:00", "02 09:00", "02 10:00", "02 11:00", "03 09:00", "04 08:00",
               "04 09:30", "04 10:00"});
  EXPECT_THAT(Written(differences),
              ElementsAre("missing 2 from 2026-03-02 07:00:00 +0000 to 2026-03-02 11:00:00 +0000",
                          "extra 2 from 2026-03-03 08:00:00 +0000 to 2026-03-03 10:00:00 +0000",
                          "extra 1 from 2026-03-04 09:00:00 +0000 to 2026-03-04 09:00:00 +0000",
                          "missing 1 from 2026-03-04 09:30:00 +0000 to 2026-03-04 09:30:00 +0000"));
  EXPECT_EQ(3U, differences.m_Missing);
  EXPECT_EQ(3U, differences.m_Extra);
}

TEST_F(RunDifferencesOfATask, AreCountedBeyondWhatIsListed) {
  const RunDifferences differences = Compare({}, 2);
  EXPECT_EQ(2U, differences.m_Days.size());
  EXPECT_EQ(9U, differences.m_Extra);
  EXPECT_FALSE(differences.IsNone());
}

TEST_F(RunDifferencesOfATask, HaveTheRunAtOnceOfATaskThatNeverRan) {
  m_Rule.m_Begin = Local("2026-03-01 08:00:00");
  m_Rule.m_IntervalSeconds = m_Rule.m_DurationSeconds = 0;
  const std::vector<std::string> expected = {"02 08:00", "03 08:00", "04 08:00"};
  EXPECT_THAT(Written(Compare(expected)),
              ElementsAre("extra 1 from 2026-03-02 00:00:00 +0000 to 2026-03-02 00:00:00 +0000"));
  m_Setting.m_LastRun = m_Setting.m_From - 1;
  EXPECT_TRUE(Compare(expected).IsNone());
}

}  // namespace NoxAgentTest
