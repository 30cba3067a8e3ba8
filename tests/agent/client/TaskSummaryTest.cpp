#include "agent/client/TaskSummary.h"

#include <VirtualTime/Zone.h>

#include <gtest/gtest.h>

namespace NoxAgentTest {

using NoxAgent::ReadRunEntry;
using NoxAgent::Summarize;
using NoxAgent::TaskGlance;
using NoxAgent::TaskReport;

namespace {

std::string TaskThatRan(const std::string& runTime) {
  return "<Task Enabled='0'><TaskHistory><RunTime>" + runTime + "</RunTime></TaskHistory></Task>";
}

}  // namespace

TEST(TaskSummary, ReadsTheRunEntryAsTheSchedulerDoes) {
  const VirtualTime::Zone zone("UTC0");
  const auto whole = ReadRunEntry(TaskThatRan("2026-06-15 08:00:00 Ok"));
  ASSERT_TRUE(whole);
  EXPECT_EQ(1781510400, whole->m_Seconds);
  EXPECT_EQ("Ok", whole->m_State);
  const auto stateless = ReadRunEntry(TaskThatRan("2026-06-15 08:00:00"));
  ASSERT_TRUE(stateless);
  EXPECT_EQ("", stateless->m_State);
  const auto wordy = ReadRunEntry(TaskThatRan("2026-06-15 08:00:00 all well"));
  ASSERT_TRUE(wordy);
  EXPECT_EQ("all", wordy->m_State);
  const auto unreadable = ReadRunEntry(TaskThatRan("some day Ok"));
  ASSERT_TRUE(unreadable);
  EXPECT_EQ(-1, unreadable->m_Seconds);
}

TEST(TaskSummary, TakesTheSchedulersNumberForTheLastRunOverTheDocumentsLocalTime) {
  const VirtualTime::Zone zone("UTC0");
  const TaskReport report{1781503200, 1781589600, true};
  const auto task = Summarize("T1", {false, "2026-06-15 08:00:00 Ok"}, report);
  EXPECT_FALSE(task.m_Enabled);
  EXPECT_TRUE(task.m_Loaded);
  EXPECT_TRUE(task.m_Late);
  EXPECT_EQ(1781589600, task.m_NextRun);
  ASSERT_TRUE(task.m_LastRun);
  EXPECT_EQ(1781503200, task.m_LastRun->m_Seconds);
}

TEST(TaskSummary, KeepsTheDocumentsTimeOfAnUnfinishedRun) {
  const VirtualTime::Zone zone("UTC0");
  const auto task = Summarize("T1", {true, "2026-06-15 08:00:00 Started"}, TaskReport{-1});
  ASSERT_TRUE(task.m_LastRun);
  EXPECT_EQ(1781510400, task.m_LastRun->m_Seconds);
}

TEST(TaskSummary, TellsARunByHandThatTheSchedulerKnowsNothingOf) {
  const VirtualTime::Zone zone("UTC0");
  NoxAgent::HandlerRun run;
  run.m_Start = 1781524800;  // 12:00
  run.m_End = 1781524805;
  run.m_Result = "Failed";
  const auto lastRun = [&](const char* runTime) {
    return Summarize("T1", {true, runTime}, std::nullopt, run).m_LastRun.value();
  };
  for (const char* const runTime : {"", "2026-06-15 08:00:00 Ok"}) {
    EXPECT_EQ("2026-06-15 12:00:00", lastRun(runTime).m_Start);
    EXPECT_EQ("Failed", lastRun(runTime).m_State);
  }
  EXPECT_EQ("2026-06-15 11:30:00", lastRun("2026-06-15 11:30:00 Ok").m_Start)
      << "its start was put off";
  run.m_Phase = NoxAgent::HandlerRun::Phase::Running;
  EXPECT_EQ("Started", lastRun("").m_State);
}

TEST(TaskSummary, TellsAFailureThatTheSchedulerWasToldNothingOf) {
  const VirtualTime::Zone zone("UTC0");
  NoxAgent::HandlerRun run;
  run.m_Start = 1781510401;
  run.m_End = 1781510405;
  run.m_Result = "Failed";
  run.m_IsFinal = true;
  const auto state = [&](const char* runTime) {
    return Summarize("T1", {true, runTime}, std::nullopt, run).m_LastRun.value().m_State;
  };
  EXPECT_EQ("Failed", state("2026-06-15 08:00:00 Ok"));
  EXPECT_EQ("Started", state("2026-06-15 08:00:00 Started"));
  EXPECT_EQ("Ok", state("2026-06-15 08:00:06 Ok")) << "another run, of which the handler knows not";
  run.m_IsFinal = false;
  EXPECT_EQ("Ok", state("2026-06-15 08:00:00 Ok")) << "somebody has said so";
}

TEST(TaskSummary, TellsAStartThatWasLeftOut) {
  const VirtualTime::Zone zone("UTC0");
  NoxAgent::HandlerRun run;
  run.m_Phase = NoxAgent::HandlerRun::Phase::None;
  run.m_Skipped = 1781510401;
  const TaskGlance document{true, "2026-06-15 08:00:00 Ok"};
  EXPECT_EQ("Skipped", Summarize("T1", document, std::nullopt, run).m_LastRun.value().m_State);
  run.m_Skipped = 1781510399;
  EXPECT_EQ("Ok", Summarize("T1", document, std::nullopt, run).m_LastRun.value().m_State);
  run.m_Skipped = 1781510401;
  run.m_Phase = NoxAgent::HandlerRun::Phase::Ended;
  run.m_Start = 1781506800;
  run.m_End = 1781506810;
  run.m_Result = "Failed";
  run.m_IsFinal = true;
  const auto task = Summarize("T1", document, std::nullopt, run);
  EXPECT_EQ("Failed", task.m_LastRun.value().m_State) << "of the last real run";
  EXPECT_EQ("2026-06-15 07:00:00", task.m_LastRun.value().m_Start);
}

TEST(TaskSummary, KnowsNoNextRunOfATaskThatIsNotLoaded) {
  const auto task = Summarize("T1", {}, std::nullopt);
  EXPECT_TRUE(task.m_Enabled);
  EXPECT_FALSE(task.m_Loaded);
  EXPECT_FALSE(task.m_LastRun);
  EXPECT_EQ(0, task.m_NextRun);
}

}  // namespace NoxAgentTest
