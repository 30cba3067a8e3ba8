// A scheduler that runs already has a memory of its own, and is somewhere within its hour.
#include "agent/simulation/Simulation.h"
#include "tests/agent/simulation/TaskText.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace NoxAgentTest {

using namespace NoxAgent;
using Kind = SimulationEvent::Kind;
using Strings = std::vector<std::string>;

namespace {

// Asked at 14:00 on the 4th, a Monday; the files are read next at 14:20.
class RunningScheduler : public testing::Test {
 protected:
  static std::string Daily(const std::string& begin, const std::string& children = {}) {
    return TriggerText(1, Begin(begin) + children);
  }

  SimulationRequest Request(const std::string& trigger, const std::string& lastRun,
                            const std::string& memory) const {
    SimulationRequest request;
    request.m_Documents = {{"task", TaskText(trigger, lastRun)}};
    request.m_Documents[0].m_Memory = {memory.empty() ? -1 : Local(memory), true, false};
    request.m_From = Local("2024-03-04 14:00:00");
    request.m_Reading = Local("2024-03-04 14:20:00");
    request.m_To = Local("2024-04-04 00:00:00");
    return request;
  }

  static Strings Next(SimulationRequest request, unsigned count) {
    request.m_Count = count;
    Strings runs;
    for (const SimulationEvent& run : FindNextRuns(request).m_Runs) {
      const std::string flags = RunFlagsText(run);
      runs.push_back(Show(run.m_Time).substr(5, 11) + (flags.empty() ? "" : " " + flags));
    }
    return runs;
  }

  VirtualTime::Zone m_Zone{"UTC0"};
  const std::string m_AtEight = Daily("2024/03/01 08:00:00");
};

}  // namespace

TEST_F(RunningScheduler, TriesAFailedRunAgainAtTheReadingAndNotBefore) {
  for (const char* const state : {"Failed", "Started", "Skipped"}) {
    const auto request =
        Request(m_AtEight, std::string("2024-03-04 08:00:00 ") + state, "2024-03-04 08:00:00");
    EXPECT_EQ(Next(request, 2), (Strings{"03-04 14:20 late, never run", "03-05 08:00"})) << state;
  }
}

TEST_F(RunningScheduler, RunsAFinishedTaskAtItsNextStart) {
  const auto request = Request(m_AtEight, "2024-03-04 08:00:00 Ok", "2024-03-04 08:00:00");
  EXPECT_EQ(Next(request, 1), Strings{"03-05 08:00"});
}

TEST_F(RunningScheduler, TakesARunUnderWayToEndWellWhenToldSo) {
  auto request = Request(m_AtEight, "2024-03-04 08:00:00 Started", "2024-03-04 08:00:00");
  request.m_Documents[0].m_Memory->m_RunEndsOk = true;
  EXPECT_EQ(Next(request, 1), Strings{"03-05 08:00"});
  EXPECT_TRUE(SimulationRequestFrom(ToJson(request)).m_Documents[0].m_Memory->m_RunEndsOk);
}

TEST_F(RunningScheduler, NeedsNoRetryAfterAStartThatComesFirst) {
  const std::string trigger =
      TriggerText(1, Begin("2024/03/01 08:00:00"), "Interval=\"15\" Duration=\"600\"");
  const auto request = Request(trigger, "2024-03-04 13:45:00 Failed", "2024-03-04 13:45:00");
  EXPECT_EQ(Next(request, 3), (Strings{"03-04 14:00", "03-04 14:15", "03-04 14:30"}));
}

TEST_F(RunningScheduler, TakesATaskThatItHoldsForOneThatNeverRanAtOnce) {
  const auto request = Request(m_AtEight, "2024-03-04 08:00:00 Ok", {});
  EXPECT_EQ(Next(request, 2), (Strings{"03-04 14:00 late, never run", "03-05 08:00"}));
}

TEST_F(RunningScheduler, JudgesARunWithoutARecordByItsFileFromTheReadingOn) {
  const auto request = Request(m_AtEight, "2024-03-03 08:00:00 Ok", "2024-03-04 08:00:00");
  EXPECT_EQ(Next(request, 2), (Strings{"03-04 14:20 late", "03-05 08:00"}));
}

TEST_F(RunningScheduler, GoesByItsMemoryOfADisabledTaskUntilTheReading) {
  auto request =
      Request(Daily("2024/03/01 14:10:00"), "2024-03-03 14:10:00 Ok", "2024-03-03 14:10:00");
  EXPECT_EQ(Next(request, 1), Strings{"03-04 14:10"});
  request.m_Documents[0].m_Memory->m_Enabled = false;
  EXPECT_EQ(Next(request, 1), Strings{"03-04 14:20 late"});
}

TEST_F(RunningScheduler, RunsUntilTheMomentThatIsAskedAbout) {
  auto request = Request(m_AtEight, "2024-03-04 08:00:00 Failed", "2024-03-04 08:00:00");
  request.m_Moment = Local("2024-03-06 12:00:00");
  EXPECT_EQ(Next(request, 2), (Strings{"03-07 08:00", "03-08 08:00"}));
  request.m_Moment = Local("2024-03-06 08:00:00");
  EXPECT_EQ(Next(request, 1), Strings{"03-06 08:00"}) << "the moment itself counts";
}

// As the simulation of all that happened before, which sets the task up by itself.
TEST_F(RunningScheduler, GoesOnAsItWouldHaveFromTheBeginning) {
  auto whole = Request(m_AtEight, "2024-03-03 08:00:00 Ok", {});
  whole.m_Documents[0].m_Memory.reset();
  whole.m_Reading.reset();
  whole.m_From = Local("2024-03-04 07:20:00");
  whole.m_To = Local("2024-03-07 00:00:00");
  whole.m_FailAt = {Local("2024-03-04 08:00:00")};
  Strings expected;
  for (const SimulationEvent& event : Simulate(whole)) {
    if (event.m_Kind == Kind::Run && event.m_Time > Local("2024-03-04 08:10:00")) {
      expected.push_back(Show(event.m_Time).substr(5, 11));
    }
  }
  auto rest = Request(m_AtEight, "2024-03-04 08:00:00 Failed", "2024-03-04 08:00:00");
  rest.m_From = Local("2024-03-04 08:10:00");
  rest.m_Reading = Local("2024-03-04 08:20:00");
  Strings runs = Next(rest, 3);
  runs[0].resize(expected.at(0).size());  // its flags
  EXPECT_EQ(runs, expected);
}

TEST_F(RunningScheduler, TellsWhenTheReadingMakesTheTaskDue) {
  const auto failed = Request(m_AtEight, "2024-03-04 08:00:00 Failed", "2024-03-04 08:00:00");
  const TaskFacts facts = FindTaskFacts(failed);
  EXPECT_EQ(facts.m_LastRun, Local("2024-03-04 08:00:00"));
  EXPECT_FALSE(facts.m_Run);
  EXPECT_EQ(facts.m_DueByReading, Local("2024-03-04 14:20:00"));
  EXPECT_EQ(TaskFactsFrom(ToJson(facts)), facts);

  const auto finished = Request(m_AtEight, "2024-03-04 08:00:00 Ok", "2024-03-04 08:00:00");
  EXPECT_FALSE(FindTaskFacts(finished).m_DueByReading);
  const std::string ended = Daily("2024/03/01 08:00:00", "<EndDate>2024-03-04 14:10:00</EndDate>");
  const auto over = Request(ended, "2024-03-04 08:00:00 Failed", "2024-03-04 08:00:00");
  EXPECT_FALSE(FindTaskFacts(over).m_DueByReading) << "the end comes first";
}

TEST_F(RunningScheduler, KnowsAtALaterMomentWhatHappenedUntilThen) {
  auto request = Request(m_AtEight, "2024-03-04 08:00:00 Ok", "2024-03-04 08:00:00");
  request.m_Moment = Local("2024-03-06 08:00:00");
  const TaskFacts facts = FindTaskFacts(request);
  EXPECT_EQ(facts.m_At, Local("2024-03-06 08:00:00"));
  EXPECT_EQ(facts.m_LastRun, Local("2024-03-05 08:00:00"));
  ASSERT_TRUE(facts.m_Run);
  EXPECT_FALSE(facts.m_Run->m_Late);
  EXPECT_TRUE(facts.m_Triggers.at(0).m_Due);
  EXPECT_EQ(facts.m_Triggers.at(0).m_Next, Local("2024-03-07 08:00:00"));
}

TEST_F(RunningScheduler, KnowsSinceWhenATaskIsGone) {
  auto request = Request(Daily("2024/03/01 08:00:00", "<EndDate>2024-03-05 12:00:00</EndDate>"),
                         "2024-03-04 08:00:00 Ok", "2024-03-04 08:00:00");
  request.m_Moment = Local("2024-03-06 08:00:00");
  const TaskFacts facts = FindTaskFacts(request);
  EXPECT_EQ(facts.m_GoneSince, Local("2024-03-05 12:20:00"));
  EXPECT_FALSE(facts.m_Run);
  EXPECT_EQ(TaskFactsFrom(ToJson(facts)), facts);
}

}  // namespace NoxAgentTest
