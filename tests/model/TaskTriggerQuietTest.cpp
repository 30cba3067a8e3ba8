// A due test that finds nothing due keeps its answer for as long as it is the answer: one trigger
// asked several times must say what a new one says.
#include "model/LocalZone.h"
#include "tests/model/Moment.h"
#include "tests/model/TriggerTable.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <string>

namespace TaskTriggerQuietTest {
namespace {

using TestSupport::Day;

constexpr const char* Daily =
    R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate></Trigger>)";

/// Asks a trigger that was asked at other moments already.
class TaskTriggerQuiet : public ::testing::Test {
 protected:
  std::string AnswerAt(const char* now) {
    const std::string answer = m_Asked.AnswerAt(Moment::At(now));
    const long sleep = m_Asked.m_SleepSeconds;
    return answer + " sleep " + (sleep == AskedTrigger::LongSleep ? "-" : std::to_string(sleep)) +
           " next " + Moment::Show(m_Asked.m_Trigger.m_NextRun);
  }
  void Use(const char* trigger, const char* lastRun) {
    m_Asked.m_Trigger = CTaskTrigger(trigger, &m_Asked.m_LastRun);
    m_Asked.m_LastRun = Moment::At(lastRun);
  }

  const VirtualTime::Zone m_Zone{Utc};
  AskedTrigger m_Asked{Daily, Moment::At("2005-03-01 08:00:30 +0000")};
};

TEST_F(TaskTriggerQuiet, EndsWithTheNextStart) {
  EXPECT_EQ(AnswerAt("2005-03-02 07:00:00 +0000"), "- sleep 3600 next 2005-03-02 08:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 07:59:59 +0000"), "- sleep 1 next 2005-03-02 08:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 08:00:00 +0000"), "due sleep - next 2005-03-03 08:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 07:30:00 +0000"), "- sleep 1800 next 2005-03-02 08:00:00 +0000");
}

TEST_F(TaskTriggerQuiet, EndsAtMidnight) {
  EXPECT_EQ(AnswerAt("2005-03-01 23:00:00 +0000"), "- sleep - next 2005-03-02 08:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-01 23:59:59 +0000"), "- sleep - next 2005-03-02 08:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 00:00:00 +0000"), "- sleep 28800 next 2005-03-02 08:00:00 +0000");
}

TEST_F(TaskTriggerQuiet, EndsWithThePeriodThatBeganTheDayBefore) {
  Use(R"(<Trigger Type="1" Duration="120"><BeginDate>2005/03/01 23:30:00</BeginDate></Trigger>)",
      "2005-03-01 23:30:05 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 01:29:00 +0000"), "- sleep - next 2005-03-02 23:30:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 01:30:00 +0000"), "- sleep - next 2005-03-02 23:30:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 01:30:01 +0000"), "- sleep 79199 next 2005-03-02 23:30:00 +0000");
}

TEST_F(TaskTriggerQuiet, EndsWithTheNextRepetition) {
  Use(R"(<Trigger Type="1" Duration="120" Interval="30">
         <BeginDate>2005/03/01 23:30:00</BeginDate></Trigger>)",
      "2005-03-02 00:30:05 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 00:40:00 +0000"), "- sleep 1200 next 2005-03-02 01:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 00:59:59 +0000"), "- sleep 1 next 2005-03-02 01:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 01:00:00 +0000"), "due sleep 1800 next 2005-03-02 01:30:00 +0000");
}

TEST_F(TaskTriggerQuiet, EndsWithTheEndDate) {
  Use(R"(<Trigger Type="1"><BeginDate>2005/03/01 08:00:00</BeginDate>
         <EndDate>2005-04-01 12:00:00</EndDate></Trigger>)",
      "2005-04-01 08:00:30 +0000");
  EXPECT_EQ(AnswerAt("2005-04-01 11:00:00 +0000"), "- sleep - next -");
  EXPECT_EQ(AnswerAt("2005-04-01 12:00:00 +0000"), "- sleep - next -");
  EXPECT_EQ(AnswerAt("2005-04-01 12:00:01 +0000"), "expired sleep - next -");
  EXPECT_EQ(AnswerAt("2006-04-01 12:00:01 +0000"), "expired sleep - next -");
  EXPECT_EQ(AnswerAt("2005-03-31 07:00:00 +0000"), "- sleep 3600 next 2005-03-31 08:00:00 +0000");
}

TEST_F(TaskTriggerQuiet, EndsWithTheBegin) {
  Use(Daily, "-");
  EXPECT_EQ(AnswerAt("2005-02-28 12:00:00 +0000"), "- sleep - next 2005-03-01 08:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-01 00:00:00 +0000"), "- sleep 28800 next 2005-03-01 08:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-01 07:59:30 +0000"), "- sleep 30 next 2005-03-01 08:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-01 08:00:00 +0000"), "due sleep - next 2005-03-02 08:00:00 +0000");
}

TEST_F(TaskTriggerQuiet, EndsWithARunAndWithItsRemoval) {
  EXPECT_EQ(AnswerAt("2005-03-02 07:00:00 +0000"), "- sleep 3600 next 2005-03-02 08:00:00 +0000");
  m_Asked.m_LastRun = Moment::At("2005-02-01 00:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 07:00:00 +0000"),
            "late sleep 3600 next 2005-03-02 08:00:00 +0000");
  m_Asked.m_LastRun = Moment::At("2005-03-02 07:00:00 +0000");
  EXPECT_EQ(AnswerAt("2005-03-02 07:00:01 +0000"), "- sleep 3599 next 2005-03-02 08:00:00 +0000");
}

TEST_F(TaskTriggerQuiet, EndsWhenTheTriggerBecomesAnother) {
  EXPECT_EQ(AnswerAt("2005-03-02 07:00:00 +0000"), "- sleep 3600 next 2005-03-02 08:00:00 +0000");
  m_Asked.m_Trigger.m_Disabled = true;
  EXPECT_EQ(AnswerAt("2005-03-02 07:00:00 +0000"), "- sleep - next -");
  m_Asked.m_Trigger.m_Disabled = false;
  EXPECT_EQ(AnswerAt("2005-03-02 07:00:00 +0000"), "- sleep 3600 next 2005-03-02 08:00:00 +0000");
  m_Asked.m_Trigger.m_DaysInterval = 7;
  EXPECT_EQ(AnswerAt("2005-03-02 07:00:00 +0000"), "- sleep - next 2005-03-08 08:00:00 +0000");
}

TEST_F(TaskTriggerQuiet, EndsWhenTheZoneBecomesAnother) {
  m_Asked.m_LastRun = Moment::At("2005-05-31 08:00:30 +0000");
  EXPECT_EQ(AnswerAt("2005-06-01 07:30:00 +0000"), "- sleep 1800 next 2005-06-01 08:00:00 +0000");
  const VirtualTime::Zone berlin(TestSupport::Berlin);
  Nox::LocalZone::Refresh();
  EXPECT_EQ(AnswerAt("2005-06-01 07:30:00 +0000"), "late sleep - next 2005-06-02 09:00:00 +0200");
}

TEST_F(TaskTriggerQuiet, TellsOfANextRunThatWasChangedMeanwhile) {
  (void)AnswerAt("2005-03-02 07:00:00 +0000");
  (void)AnswerAt("2005-03-02 07:00:01 +0000");
  EXPECT_FALSE(m_Asked.m_NextRunChanged);
  m_Asked.m_Trigger.UpdateClosestRun(false);
  EXPECT_EQ(m_Asked.m_Trigger.m_NextRun, CTaskTrigger::NoTime);
  EXPECT_EQ(AnswerAt("2005-03-02 07:00:02 +0000"), "- sleep 3598 next 2005-03-02 08:00:00 +0000");
  EXPECT_TRUE(m_Asked.m_NextRunChanged);
}

TEST_F(TaskTriggerQuiet, IsOfNoUseToACallerWhoKnowsThatTheTaskHasExpired) {
  EXPECT_EQ(AnswerAt("2005-03-01 09:00:00 +0000"), "- sleep - next 2005-03-02 08:00:00 +0000");
  long sleepSeconds = Day;
  bool late = false;
  bool expired = true;
  bool nextRunChanged = false;
  EXPECT_FALSE(m_Asked.m_Trigger.IsDue(false, false, sleepSeconds, late, expired, nextRunChanged));
  EXPECT_EQ(m_Asked.m_Trigger.m_NextRun, CTaskTrigger::NoTime);
  EXPECT_TRUE(nextRunChanged);
}

}  // namespace
}  // namespace TaskTriggerQuietTest
